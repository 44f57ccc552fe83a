#pragma once

#include "bench/core/Catalogue.h"

#include <cstdint>
#include <string>

namespace bench {

/**
 * A firmware image (.tfw): what the chip updaters write into a drive's flash chip.
 *
 * The layout of the file is described in docs/firmware-image.md. Versions are bytes, to be read as Latin-1.
 */
struct FirmwareImage
{
    std::int32_t bridge = Chipset::NotSupported; ///< the bridge that the image is for
    std::string firmwareVersion;
    std::string configurationRevision;
    std::string firmware;
    std::string configuration;

    static constexpr std::size_t MaximumFirmware =
        120 * 1024 - 256; ///< bytes that fit into the chip's firmware region
    static constexpr std::size_t MaximumConfiguration = 8 * 1024 - 256;
    static constexpr std::size_t MaximumText = 32; ///< bytes of a version
    static constexpr std::size_t MaximumFile = 160 * 1024; ///< bytes; no larger file is read

    /// The image that the maker would ship for this model with these versions. The payloads are made up, but
    /// always the same for the same arguments.
    static FirmwareImage forModel(
        const Model &model, const std::string &firmwareVersion, const std::string &configurationRevision);

    /// The whole file.
    std::string encode() const;

    /// Reads a whole file, digests included. Refused with what is wrong with it: "is empty".
    static FirmwareImage decode(const std::string &file);

    /// The bridge and the versions in the file at `path`, which is not checked any further; the payloads stay
    /// empty. Refused like decode().
    static FirmwareImage readHeader(const std::string &path);

    /// Reads the file at `path`, at most its first `limit` bytes. Refused like decode().
    static FirmwareImage read(const std::string &path, std::size_t limit = MaximumFile);
};

} // namespace bench
