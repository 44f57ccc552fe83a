// SPDX-License-Identifier: MIT
#include "devices/SettledDevices.h"

#include <DeviceDiscovery.h>

#include <QThread>

namespace {
constexpr unsigned long SettlingMicroseconds = 500000;
} // namespace

bool isSettled(const DeviceInfo &device)
{
    return device.firmwareStatus != Status::NotYetDetermined
        && device.configurationStatus != Status::NotYetDetermined;
}

void findSettledDevices(DeviceDiscovery &discovery, std::vector<DeviceInfo> &devices, QDeadlineTimer deadline)
{
    discovery.getTarvoDevice(devices);
    std::size_t index = 0;
    while (index < devices.size()) {
        if (isSettled(devices[index])) {
            ++index;
        } else if (deadline.hasExpired()) {
            return;
        } else {
            QThread::usleep(SettlingMicroseconds);
            discovery.getTarvoDevice(devices);
            index = 0;
        }
    }
}
