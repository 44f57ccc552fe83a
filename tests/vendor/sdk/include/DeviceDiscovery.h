// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

struct DeviceInfo;

class DeviceDiscovery
{
public:
    explicit DeviceDiscovery(int buses = 2);
    virtual ~DeviceDiscovery();
    virtual int busCount() const;
    virtual void getTarvoDevice(std::vector<DeviceInfo> &devices);

protected:
    int buses;
    double timeouts[16] = {};
    std::string trace;
};
