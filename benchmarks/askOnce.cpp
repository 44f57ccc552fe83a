// SPDX-License-Identifier: MIT
// The floor of a command that lists drives: a program that asks the library for them, and ends.

#include "devices/DeviceInfo.h"

#include <DeviceDiscovery.h>

#include <QCoreApplication>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    DeviceDiscovery discovery;
    std::vector<DeviceInfo> devices;
    discovery.getTarvoDevice(devices);
    return devices.empty() ? 1 : 0;
}
