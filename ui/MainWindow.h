// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QString>
#include <QVector>
#include <QWidget>

#include <vector>

class DeviceDiscoveryThread;
class DeviceLayout;
class QBoxLayout;
class QLabel;
class QStackedWidget;
class UpdateDeviceThread;

/**
 * The program's only window: takes the device lists, drives the one update that may be under way, and
 * rebuilds what it shows from scratch whenever either changes.
 *
 * Everything here runs on the GUI thread; lists and results arrive queued from theirs.
 */
class MainWindow : public QWidget
{
    Q_OBJECT

public:
    enum UpdateState {
        Idle, ///< all drives are shown
        DeviceSelected, ///< the selected drive's confirmation
        InProgress, ///< the worker is flashing the selected drive
        Success, ///< the selected drive was updated
        RestartDevice, ///< the selected drive was updated and has to be switched off and on
        Failure ///< the selected drive's update failed
    };

    /// Builds the window, warns of an installed companion product, starts discovery and shows itself.
    /// The arguments are the process' own, as the application object left them; `argv` must outlive the
    /// window.
    MainWindow(int argc, char **argv);
    ~MainWindow() override;

    /// Rebuilds the stack page from the device list, the update state and the selected serial number.
    /// Blocks for the companion check's shell command, and in the companion warning when it is due.
    void updateWindow();
    /// Sizes the window for a number of drives.
    void resizeWindow(int deviceCount);

public slots:
    /// Hands the computer back to the companion product; takes a second. For the end of the event loop.
    void onExit();
    void cancelUpdate();
    void updateDevice(QString deviceSerialNumber);
    void startUpdate(QString deviceSerialNumber);
    /// Shows all drives and resumes discovery, from any state; a worker that is flashing goes on.
    void terminateUpdate();

private slots:
    void updateResult(bool result);
    void updateDeviceList(QVector<DeviceInfo> deviceList);

private:
    void showPage(QWidget *page);
    bool warnOfCompanion();
    void addNoDriveMessage(QBoxLayout *column);
    void addDevicePages(QBoxLayout *column);
    void showState(DeviceLayout *devicePage) const;
    void followUpdatedDevice(const std::vector<DeviceInfo> &newList);
    bool isSelected(const DeviceInfo &device) const;

    [[maybe_unused]] int argc;
    char **argv;
    int updateState = Idle;
    QLabel *titleLabel = nullptr;
    QStackedWidget *pageStack = nullptr;
    QString selectedSerialNumber =
        QString(""); ///< the drive last chosen; emptied by cancelling and terminating
    std::vector<DeviceInfo> deviceList; ///< the last list that differed from the one before
    DeviceDiscoveryThread *discoveryThread = nullptr;
    UpdateDeviceThread *updateThread = nullptr; ///< the latest worker; earlier ones live on
    bool updatedDeviceUnplugged = false;
    bool restartSecondFlag = false;
    bool relaunchQuaydeskOnExit = false;
    bool relaunchStatusItemOnExit = false;
    bool quaydeskWarningShown = false;

public:
    bool quitAtStartup = false; ///< true once the companion warning was acknowledged
};
