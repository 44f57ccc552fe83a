// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QThread>
#include <QVector>

#include <atomic>

/**
 * Polls the discovery library for the attached drives and hands on every list it gets.
 *
 * A pass, two seconds of pause, and so on, while discoveryEnabled is true: querying the library while a drive
 * is being flashed would contend for that drive. Lists are not compared here; the receiver finds out what
 * changed. stopRequested is looked at before the first pass and after each pause; nobody waits for the
 * thread.
 */
class DeviceDiscoveryThread : public QThread
{
    Q_OBJECT

public:
    DeviceDiscoveryThread();

    std::atomic<bool> discoveryEnabled; ///< written by the GUI thread; false skips the passes
    std::atomic<bool> stopRequested; ///< written by the GUI thread; true ends run()

signals:
    /// Emitted on this thread once a pass, also with an unchanged or an empty list. Every drive in it has
    /// both statuses determined.
    void updateDeviceList(QVector<DeviceInfo> deviceList);

protected:
    void run() override;

private:
    void runPass();
};
