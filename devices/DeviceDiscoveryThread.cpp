// SPDX-License-Identifier: MIT
#include "devices/DeviceDiscoveryThread.h"

#include "devices/SettledDevices.h"
#include "devices/Timing.h"

#include <DeviceDiscovery.h>

#include <vector>

DeviceDiscoveryThread::DeviceDiscoveryThread() : discoveryEnabled(true), stopRequested(false) { }

void DeviceDiscoveryThread::run()
{
    if (stopRequested.load(std::memory_order_relaxed)) {
        return;
    }
    do {
        if (discoveryEnabled.load(std::memory_order_relaxed)) {
            runPass();
        }
        QThread::sleep(PauseSeconds);
    } while (!stopRequested.load(std::memory_order_relaxed));
}

void DeviceDiscoveryThread::runPass()
{
    std::vector<DeviceInfo> found;
    DeviceDiscovery discovery;
    // A list is published only once every drive in it is fully known; neither flag cuts the wait short.
    findSettledDevices(discovery, found);

    QVector<DeviceInfo> deviceList;
    for (const DeviceInfo &device : found) {
        deviceList.append(device);
    }
    emit updateDeviceList(deviceList);
}
