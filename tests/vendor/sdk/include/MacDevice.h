// SPDX-License-Identifier: MIT
#pragma once

#include <string>

class MacDevice
{
public:
    MacDevice(const char *busName, const std::string &serialNumber);
    virtual ~MacDevice();
    virtual int mountDisk();
    virtual int unmountDisk();

private:
    int node = 0;
    std::string busName;
    std::string serialNumber;
};
