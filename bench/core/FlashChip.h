#pragma once

#include <array>
#include <string>

namespace bench {

struct FirmwareImage;

/**
 * The content of the flash chip of a drive's bridge.
 *
 * A chip is erased by sectors, which sets every bit, and programmed by pages, which can only clear bits. Its
 * lower part holds the firmware, its upper part the configuration; each begins with a page that names the
 * version, the size and the digest of what follows. That page is programmed last, so a part is complete or it
 * is incomplete.
 */
class FlashChip
{
public:
    static constexpr std::size_t PageSize = 256;
    static constexpr std::size_t SectorSize = 4096;
    static constexpr std::size_t Size = 128 * 1024;

    /// One part of the chip.
    struct Region
    {
        std::size_t start; ///< byte position, the beginning of a sector
        std::size_t size; ///< bytes, whole sectors
    };
    static constexpr Region Firmware = {0, 120 * 1024};
    static constexpr Region Configuration = {120 * 1024, 8 * 1024};

    /// What an image puts into one part: the payload, behind a page that describes it.
    struct Part
    {
        Region region;
        const std::string &version;
        const std::string &payload;

        std::size_t payloadStart() const { return region.start + PageSize; }
        /// The page that makes the part complete.
        std::string descriptor() const;
    };
    /// `image` outlives what is returned.
    static std::array<Part, 2> parts(const FirmwareImage &image);

    /// A blank chip.
    FlashChip();
    /// A chip with this content; what is missing to its size is blank.
    explicit FlashChip(std::string content);

    const std::string &content() const { return bytes; }

    void eraseSector(std::size_t number);
    /// Programs these bytes, within pages that were erased before.
    void program(std::size_t position, const std::string &data);

    /// The version of what a part holds; empty when the part is blank or incomplete.
    std::string version(const Region &region) const;

    /// Erases the chip and programs the whole image.
    void load(const FirmwareImage &image);

private:
    std::string bytes;
};

} // namespace bench
