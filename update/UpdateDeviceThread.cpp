#include "update/UpdateDeviceThread.h"

#include <Asmedia105X.h>
#include <MacDevice.h>
#include <OxSemiFireWire.h>

#include <cstdint>
#include <utility>

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

UpdateDeviceThread::UpdateDeviceThread(DeviceInfo deviceInfo, std::string executablePath)
    : deviceInfo(std::move(deviceInfo)), executablePath(std::move(executablePath))
{
}

void UpdateDeviceThread::run()
{
    // Without a slash, rfind's npos + 1 is 0: the directory is empty and the image is looked for in the
    // current directory.
    const std::string directory = executablePath.substr(0, executablePath.rfind('/') + 1);
    const std::string imagePath = directory + deviceInfo.firmwareFileName;
    const std::string &serialNumber = deviceInfo.serialNumber;

    bool result = false;
    switch (deviceInfo.chipsetType) {
    case Chipset::Asm1051:
        result = flashUsbDrive<Asm1051>(serialNumber, imagePath);
        break;
    case Chipset::Asm1051E:
        result = flashUsbDrive<Asm1051E>(serialNumber, imagePath);
        break;
    case Chipset::Asm1053:
        result = flashUsbDrive<Asm1053>(serialNumber, imagePath);
        break;
    case Chipset::OxSemiFireWire934:
        result = flashFireWireDrive<OxSemiFireWire934>(serialNumber, imagePath);
        break;
    case Chipset::OxSemiFireWire944:
        result = flashFireWireDrive<OxSemiFireWire944>(serialNumber, imagePath);
        break;
    default:
        break;
    }
    emit updateResult(result);
}
