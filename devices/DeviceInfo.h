// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

/// Codes of DeviceInfo::chipsetType: the bridge controller between the bus and the disk.
namespace Chipset {
constexpr std::int32_t NotSupported = 0;
constexpr std::int32_t Asm1051 = 1;
constexpr std::int32_t Asm1051E = 2;
constexpr std::int32_t Asm1053 = 3;
constexpr std::int32_t NoUpdater = 4; ///< shown like a supported one, but its update always fails
constexpr std::int32_t OxSemiFireWire934 = 5;
constexpr std::int32_t OxSemiFireWire944 = 6;

/// True for a bridge whose drive has to be restarted after its flash.
constexpr bool isUsbBridge(std::int32_t chipset)
{
    return chipset == Asm1051 || chipset == Asm1051E || chipset == Asm1053;
}
} // namespace Chipset

/// Codes of DeviceInfo::firmwareStatus and DeviceInfo::configurationStatus.
namespace Status {
constexpr std::int32_t NotYetDetermined = 0;
constexpr std::int32_t UpdateRequired = 1;
constexpr std::int32_t UpToDate = 2;
constexpr std::int32_t Unknown = 3; ///< as any other value
} // namespace Status

/// Codes of DeviceInfo::vendorId: the bus through which a drive is attached.
namespace Vendor {
constexpr std::uint16_t Usb = 0x0E7A;
constexpr std::uint16_t FireWire = 0xC5E2;
} // namespace Vendor

/**
 * One attached drive, as the discovery library reports it.
 *
 * A plain value: every holder owns a copy and never changes it; a changed drive arrives as a new
 * record. The order, widths and types of the fields are the discovery library's and must stay as they
 * are. Texts are bytes to be read as Latin-1 up to the first zero byte.
 */
struct DeviceInfo
{
    std::string auxiliaryText1; ///< the library's own; only copied and compared
    std::uint16_t productId = 0; ///< USB product ID; picks the picture of a USB drive
    std::string modelName; ///< as shown to the user; picks the picture of a FireWire drive
    std::string serialNumber; ///< the drive's identity throughout the program
    std::uint16_t vendorId = 0; ///< a code of namespace Vendor; any other value is an unknown bus
    std::string auxiliaryText2; ///< the library's own; only copied and compared
    std::string firmwareVersion; ///< version running on the drive
    std::string firmwareFileName; ///< bare name of the fitting image, beside the executable
    std::string newFirmwareVersion; ///< version inside that image
    std::int32_t chipsetType =
        Chipset::NotSupported; ///< a code of namespace Chipset; any other has no updater
    std::int32_t firmwareStatus = Status::NotYetDetermined; ///< a code of namespace Status
    std::int32_t configurationStatus = Status::NotYetDetermined; ///< a code of namespace Status
};

/// True when all twelve fields are equal; texts are compared byte by byte, whatever bytes they hold.
bool operator==(const DeviceInfo &left, const DeviceInfo &right);
bool operator!=(const DeviceInfo &left, const DeviceInfo &right);
