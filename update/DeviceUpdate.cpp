// SPDX-License-Identifier: MIT
#include "update/DeviceUpdate.h"

#include <Asmedia105X.h>
#include <MacDevice.h>
#include <OxSemiFireWire.h>

namespace {

template <typename Updater>
bool flashUsbDrive(const std::string &serialNumber, const std::string &imagePath)
{
    Updater updater(serialNumber);
    const bool flashed = updater.updateDevice(imagePath);
    // The volumes go away even when the flash failed. The library's whole value is combined, bit by bit:
    // only an odd one confirms the unmount.
    const int unmounted = updater.macDevice->unmountDisk();
    return (static_cast<int>(flashed) & unmounted) != 0;
}

template <typename Updater>
bool flashFireWireDrive(const std::string &serialNumber, const std::string &imagePath)
{
    Updater updater(serialNumber);
    return updater.updateDevice(imagePath);
}

} // namespace

std::string imagePath(const DeviceInfo &device, const std::string &executablePath)
{
    // Without a slash, rfind's npos + 1 is 0, and the directory is empty.
    return executablePath.substr(0, executablePath.rfind('/') + 1) + device.firmwareFileName;
}

bool hasImageName(const DeviceInfo &device)
{
    return device.firmwareFileName.find_first_of(std::string("/\0", 2)) == std::string::npos;
}

bool updateDevice(const DeviceInfo &device, const std::string &executablePath)
{
    const std::string image = imagePath(device, executablePath);
    const std::string &serialNumber = device.serialNumber;
    switch (device.chipsetType) {
    case Chipset::Asm1051:
        return flashUsbDrive<Asm1051>(serialNumber, image);
    case Chipset::Asm1051E:
        return flashUsbDrive<Asm1051E>(serialNumber, image);
    case Chipset::Asm1053:
        return flashUsbDrive<Asm1053>(serialNumber, image);
    case Chipset::OxSemiFireWire934:
        return flashFireWireDrive<OxSemiFireWire934>(serialNumber, image);
    case Chipset::OxSemiFireWire944:
        return flashFireWireDrive<OxSemiFireWire944>(serialNumber, image);
    default:
        return false;
    }
}
