// SPDX-License-Identifier: MIT
#include "tests/support/DeviceRecords.h"

DeviceInfo DeviceRecords::usbDrive(const std::string &serialNumber)
{
    DeviceInfo drive;
    drive.auxiliaryText1 = "first";
    drive.productId = 0x1A20;
    drive.modelName = "Pebble";
    drive.serialNumber = serialNumber;
    drive.vendorId = Vendor::Usb;
    drive.auxiliaryText2 = "second";
    drive.firmwareVersion = "1.2";
    drive.firmwareFileName = "pebble.tfw";
    drive.newFirmwareVersion = "1.3";
    drive.chipsetType = Chipset::Asm1051;
    drive.firmwareStatus = Status::UpdateRequired;
    drive.configurationStatus = Status::UpdateRequired;
    return drive;
}

DeviceInfo DeviceRecords::fireWireDrive(const std::string &serialNumber)
{
    DeviceInfo drive = usbDrive(serialNumber);
    drive.productId = 0;
    drive.modelName = "Harbour FireWire";
    drive.vendorId = Vendor::FireWire;
    drive.firmwareFileName = "harbour-firewire.tfw";
    drive.chipsetType = Chipset::OxSemiFireWire934;
    return drive;
}
