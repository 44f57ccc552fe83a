// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QMetaType>

/// Records as the discovery library reports them, to be adapted by the test.
namespace DeviceRecords {

/// A "Pebble" behind an Asm1051, restarted by unplugging, that needs firmware and configuration.
DeviceInfo usbDrive(const std::string &serialNumber = "USB-1");
/// A "Harbour FireWire" behind an OxSemiFireWire934 that needs firmware and configuration.
DeviceInfo fireWireDrive(const std::string &serialNumber = "FW-1");

} // namespace DeviceRecords

Q_DECLARE_METATYPE(DeviceInfo)
