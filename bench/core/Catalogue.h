// SPDX-License-Identifier: MIT
#pragma once

#include "devices/Restart.h"

#include <array>
#include <cstdint>
#include <string>

namespace bench {

/// The way of restarting in a few words, for a person.
const char *restartText(Restart restart);

/// One model of the maker's drives.
struct Model
{
    std::uint16_t vendorId; ///< a code of namespace Vendor
    std::uint16_t productId; ///< USB product ID; 0 for a FireWire drive
    const char *name; ///< as the drive reports it
    std::int32_t chipset; ///< a code of namespace Chipset
    const char *body; ///< what the drive looks like, in a few words
    const char *newestFirmware; ///< firmware version in the image that belongs to this release
    const char *newestConfiguration; ///< configuration revision in that image

    bool isFireWire() const { return vendorId == Vendor::FireWire; }
    Restart restart() const { return restartOf(chipset, productId); }
    const char *busName() const { return isFireWire() ? "FireWire" : "USB"; }
    /// File name of the firmware image, for example "harbour-firewire-800.tfw".
    std::string imageName() const;
    /// Path of the picture in the program's resource collection.
    std::string picture() const;
};

/// All models, USB ones by product ID, then FireWire ones by bridge.
const std::array<Model, 21> &models();

/// The model of exactly that name; refused when there is none.
const Model &modelNamed(const std::string &name);

/// Name of the bridge with that code ("Asm1051E"); "none" for a code without an updater.
const char *bridgeName(std::int64_t chipset);

/// The number as 0x and four upper-case hexadecimal digits.
std::string hexadecimalId(std::uint16_t number);

} // namespace bench
