// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Drive.h"
#include "devices/DeviceInfo.h"

#include <QFrame>
#include <QTimer>

#include <array>
#include <string>

class QBoxLayout;
class QProgressBar;
class QPushButton;

namespace bench {

class Store;
class TextLabel;

/**
 * One drive of the bench: what it is, how it is, and its buttons, none of which is ever disabled, so that
 * each keeps the keyboard's focus.
 *
 * The program must notice that a drive was away, so one that is plugged in early waits for the rest of the
 * time.
 */
class DriveRow : public QFrame
{
    Q_OBJECT

public:
    DriveRow(std::string benchDirectory, const Drive &drive, QWidget *parent);
    /// Plugs in a drive that is about to come back: it is not left unplugged.
    ~DriveRow() override;

    /// Shows the drive as it is now and as discovery would report it.
    void showDrive(const Drive &drive, const DeviceInfo &record);

signals:
    /// A button was pressed; `refusal` says why it had no effect, and is empty when it had one.
    void pressed(const QString &refusal);

private:
    void addFacts(QBoxLayout *lines, const Model &model);
    void addState(QBoxLayout *lines);
    void addButtons(QBoxLayout *lines, const Model &model);
    QPushButton *addButton(QBoxLayout *line, const QString &text);
    void setText(QPushButton *button, const QString &text);
    void switchPlug();
    void plug();
    void restart();
    void comeBackInTime(Store &store);

    const std::string benchDirectory;
    const std::string serial;
    bool isPlugged = false;
    QTimer comeBack; ///< runs while the drive is unplugged and about to be plugged in

    TextLabel *serialLabel = nullptr;
    TextLabel *bridgeLabel = nullptr;
    std::array<TextLabel *, 3> versionLabels = {};
    TextLabel *stateLabel = nullptr;
    QProgressBar *progress = nullptr; ///< beside the state while the flash is written
    QPushButton *plugButton = nullptr; ///< undoes what it did: "Unplug", "Plug"
    TextLabel *faultLabel = nullptr; ///< this one and the next take no room where there is nothing to tell
    TextLabel *updateLabel = nullptr;
};

} // namespace bench
