// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Catalogue.h"
#include "bench/core/Faults.h"

#include <cstdint>
#include <string>

namespace bench {

/**
 * A firmware image (.tfw): what the chip updaters write into a drive's flash.
 *
 * The layout of the file is described in docs/firmware-image.md. Versions are texts of characters U+0000 to
 * U+00FF.
 */
struct Image
{
    std::int64_t bridge = Chipset::NotSupported; ///< the bridge that the image is for
    std::string firmware; ///< version
    std::string configuration; ///< revision
    std::int64_t length = 0; ///< bytes of content

    static constexpr std::size_t MaximumText = 32; ///< characters of a version
    static constexpr std::size_t MaximumFile = 160 * 1024; ///< bytes; no larger file is read
};

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Image, bridge, firmware, configuration, length)

/// The file of the image that the maker would ship for this model with these versions. The content is made
/// up, but always the same for the same arguments.
std::string imageFile(const Model &model, const std::string &firmware, const std::string &configuration);

/// The header of the file at `path`, at most whose first `limit` bytes are seen. The file is checked as a
/// whole; refused with what is wrong with it: "is empty".
Image readImage(const std::string &path, std::size_t limit = Image::MaximumFile);

/// The header alone, which is not checked any further. Refused likewise.
Image readImageHeader(const std::string &path);

/// Where the bench has its image in place of the one at `path`: an image of the same name in the directory
/// "images" of the bench counts first.
std::string imagePath(const std::string &benchDirectory, const std::string &path);

} // namespace bench
