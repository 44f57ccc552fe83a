// SPDX-License-Identifier: MIT
#include "devices/DeviceInfo.h"

bool operator==(const DeviceInfo &left, const DeviceInfo &right)
{
    return left.auxiliaryText1 == right.auxiliaryText1 && left.productId == right.productId
        && left.modelName == right.modelName && left.serialNumber == right.serialNumber
        && left.vendorId == right.vendorId && left.auxiliaryText2 == right.auxiliaryText2
        && left.firmwareVersion == right.firmwareVersion && left.firmwareFileName == right.firmwareFileName
        && left.newFirmwareVersion == right.newFirmwareVersion && left.chipsetType == right.chipsetType
        && left.firmwareStatus == right.firmwareStatus
        && left.configurationStatus == right.configurationStatus;
}

bool operator!=(const DeviceInfo &left, const DeviceInfo &right)
{
    return !(left == right);
}
