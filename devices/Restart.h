// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

/// How a person restarts a drive so that it runs what was written into its bridge.
enum class Restart {
    Unplug, ///< pull its cable and plug it in again
    PowerButton, ///< switch it off and on
    NotNeeded, ///< it runs the new firmware at once
    NotKnown, ///< a product or a bridge that nobody has described
};

/// How a drive is restarted, by its bridge and, behind a USB bridge, its product ID. Any thread may call.
constexpr Restart restartOf(std::int32_t chipsetType, std::uint16_t productId)
{
    if (chipsetType == Chipset::OxSemiFireWire934 || chipsetType == Chipset::OxSemiFireWire944) {
        return Restart::NotNeeded;
    }
    if (!Chipset::isUsbBridge(chipsetType)) {
        return Restart::NotKnown;
    }
    switch (productId) {
    case 0x1A20:
    case 0x1A21:
    case 0x1A24:
    case 0x1A27:
    case 0x1A28:
    case 0x1A2B:
    case 0x1A2E:
    case 0x1A2F:
    case 0x1A33:
    case 0x1A35:
    case 0x1A38:
        return Restart::Unplug;
    case 0x1A3C:
    case 0x1A3D:
    case 0x1A41:
    case 0x1A46:
    case 0x1A4D:
        return Restart::PowerButton;
    default:
        return Restart::NotKnown;
    }
}
