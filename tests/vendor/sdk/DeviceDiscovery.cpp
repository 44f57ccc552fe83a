// SPDX-License-Identifier: MIT
#include <DeviceDiscovery.h>

#include "tests/vendor/sdk/Drive.h"

#include <cstdint>

// The record as this library lays it out; the program has a definition of its own.
struct DeviceInfo
{
    std::string location;
    std::uint16_t product = 0;
    std::string model;
    std::string serial;
    std::uint16_t vendor = 0;
    std::string note;
    std::string version;
    std::string imageName;
    std::string imageVersion;
    std::int32_t bridge = 0;
    std::int32_t firmware = 0;
    std::int32_t configuration = 0;
};

DeviceDiscovery::DeviceDiscovery(int buses) : buses(buses) { }

DeviceDiscovery::~DeviceDiscovery() = default;

int DeviceDiscovery::busCount() const
{
    return buses;
}

void DeviceDiscovery::getTarvoDevice(std::vector<DeviceInfo> &devices)
{
    devices.clear();
    if (std::filesystem::exists(drivePath("attached"))) {
        const bool updated = std::filesystem::exists(drivePath("flash"));
        DeviceInfo drive;
        drive.location = "port 3";
        drive.product = 0x1A20;
        drive.model = "Pebble";
        drive.serial = "SDK1";
        drive.vendor = 0x0E7A;
        drive.note = "miniature";
        drive.version = updated ? "7.01" : "7.00";
        drive.imageName = "miniature.tfw";
        drive.imageVersion = "7.01";
        drive.bridge = 3;
        drive.firmware = updated ? 2 : 1;
        drive.configuration = 2;
        devices.push_back(drive);
    }
    recordCall("query: " + std::to_string(devices.size()));
}
