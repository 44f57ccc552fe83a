// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

/**
 * The page of one attached drive: its picture, texts and buttons.
 *
 * Only contentWidget is shown; the page itself stays hidden behind it, relays the buttons to the main
 * window, and is deleted through the event loop once contentWidget is gone. A page is built in its initial
 * look and takes at most one other, by one call of a state function; it never goes back. GUI thread
 * only.
 */
class DeviceLayout : public QWidget
{
    Q_OBJECT

public:
    /// `mainWindow`: receiver of the choices made on the page; needs the slots updateDevice(QString),
    /// startUpdate(QString) and cancelUpdate(). Not the page's parent.
    DeviceLayout(QObject *mainWindow, DeviceInfo device);

    /// The looks of a page that is under way: confirmation, flashing, done, waiting for the restart, failed.
    void deviceSelected();
    void updateInProgess();
    void updateSuccess();
    void restartDevice();
    void updateFailure();

    /// Each builder returns a new label without a parent, which the caller owns.
    QLabel *getIcon();
    QLabel *messageModelName();
    QLabel *messageFirmwareVersion();
    /// Also stores a new label without a parent in firmwareStatusIcon.
    QLabel *messageFirmwareStatus();
    /// Also stores a new label without a parent in configurationStatusIcon.
    QLabel *messageConfigurationStatus();
    QLabel *messageInstructions();
    QLabel *messageWarning();
    QLabel *messageSuccess();
    QLabel *messageFailure();

signals:
    /// Not emitted: the cancel button reaches the main window directly.
    void cancelUpdate();
    void updateDevice(QString serialNumber);
    void startUpdate(QString serialNumber);

private slots:
    void updateDevice();
    void startUpdate();

private:
    QPushButton *newButton(const char *name);
    void setStatusPicture(QLabel *label, std::int32_t status) const;
    void setPicture(QLabel *label, const QString &path, int size, const QString &name) const;

    DeviceInfo deviceInfo;

public:
    QWidget *contentWidget = nullptr; ///< what the main window puts on screen; from then on the window's

private:
    QLabel *modelNameLabel = nullptr;
    QLabel *firmwareVersionLabel = nullptr;
    QLabel *firmwareStatusLabel = nullptr;
    QLabel *configurationStatusLabel = nullptr;
    QLabel *firmwareStatusIcon = nullptr;
    QLabel *configurationStatusIcon = nullptr;
    QPushButton *startButton = nullptr;
    QPushButton *updateButton = nullptr; ///< null when the bridge is not supported
    QPushButton *cancelButton = nullptr;
    QPushButton *finishButton = nullptr;
    QProgressBar *progressBar = nullptr;
    QObject *mainWindow = nullptr;
};
