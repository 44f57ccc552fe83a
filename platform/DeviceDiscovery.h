// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

struct DeviceInfo;

/**
 * The maker's device-discovery library.
 *
 * Created, used and destroyed on the discovery thread only, one object a polling pass. The program
 * relies on nothing surviving from one object to the next.
 */
class DeviceDiscovery
{
public:
    DeviceDiscovery();
    ~DeviceDiscovery();
    DeviceDiscovery(const DeviceDiscovery &) = delete;
    DeviceDiscovery &operator=(const DeviceDiscovery &) = delete;

    /**
     * Probes both buses and replaces the contents of `devices` by one record for each attached drive of
     * the maker's, in the library's own order.
     *
     * May take time. While the library has not determined a drive's firmwareStatus or
     * configurationStatus it reports 0 there, and the caller asks again with the same vector. A bridge
     * without an updater is reported as chipsetType 0. There is no failure: a library that finds nothing
     * leaves the vector empty.
     */
    void getTarvoDevice(std::vector<DeviceInfo> &devices);
};
