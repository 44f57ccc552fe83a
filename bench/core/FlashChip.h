#pragma once

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

    /// A blank chip.
    FlashChip();
    /// A chip with this content; what is missing to its size is blank.
    explicit FlashChip(std::string content);

    const std::string &content() const { return bytes; }
    std::string page(std::size_t number) const { return bytes.substr(number * PageSize, PageSize); }

    void eraseSector(std::size_t number);
    /// Programs the beginning of a page; `data` is at most PageSize bytes.
    void programPage(std::size_t number, const std::string &data);

    /// The page that makes a part complete: it describes the payload that was programmed after it.
    static std::string descriptor(const std::string &version, const std::string &payload);
    /// The version of what a part holds; empty when the part is blank or incomplete.
    std::string version(const Region &region) const;

    /// Erases the chip and programs the whole image.
    void load(const FirmwareImage &image);

private:
    void programPart(const Region &region, const std::string &version, const std::string &payload);

    std::string bytes;
};

} // namespace bench
