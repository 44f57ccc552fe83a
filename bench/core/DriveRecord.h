#pragma once

#include <QString>

#include <cstdint>

namespace bench {

/// What discovery reports of one drive. Texts hold one code point, U+0000 to U+00FF, for each byte.
struct DriveRecord
{
    QString auxiliaryText1; ///< name of the bus
    std::uint16_t productId = 0;
    QString modelName;
    QString serialNumber;
    std::uint16_t vendorId = 0;
    QString auxiliaryText2; ///< configuration revision that the drive runs
    QString firmwareVersion; ///< empty in the boot ROM
    QString firmwareFileName;
    QString newFirmwareVersion;
    std::int32_t chipsetType = 0;
    std::int32_t firmwareStatus = 0; ///< 0 undetermined, 1 to be updated, 2 up to date, 3 unknown
    std::int32_t configurationStatus = 0;
};

} // namespace bench
