// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QThread>

#include <string>

/**
 * Flashes one drive and reports the outcome.
 *
 * One object an update: created and started on the GUI thread, it is neither stopped
 * nor waited for, and the end of the process cuts it short.
 */
class UpdateDeviceThread : public QThread
{
    Q_OBJECT

public:
    /// `deviceInfo`: the drive to flash. `executablePath`: the path by which the program was started
    /// (argv[0], bytes as the operating system passed them); the image is looked for in its directory.
    UpdateDeviceThread(DeviceInfo deviceInfo, std::string executablePath);

signals:
    /// Emitted once, on the worker's thread. True when the drive was flashed and, behind a USB bridge,
    /// its volumes were unmounted; false for everything else, without a reason.
    void updateResult(bool result);

protected:
    void run() override;

private:
    DeviceInfo deviceInfo;
    std::string executablePath;
};
