// SPDX-License-Identifier: MIT
#include <MacDevice.h>

#include "tests/vendor/sdk/Drive.h"

MacDevice::MacDevice(const char *busName, const std::string &serialNumber)
    : busName(busName), serialNumber(serialNumber)
{
}

MacDevice::~MacDevice() = default;

int MacDevice::mountDisk()
{
    return node;
}

int MacDevice::unmountDisk()
{
    recordCall("unmount " + busName + ' ' + serialNumber);
    return 1;
}
