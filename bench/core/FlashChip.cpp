#include "bench/core/FlashChip.h"

#include "bench/core/FirmwareImage.h"
#include "bench/core/Sha256.h"

#include <cstdint>
#include <utility>

namespace bench {

namespace {

// The page that describes a part of the chip: mark, size, digest, length of the version, version.
const std::string_view Mark("TVRG");
constexpr std::size_t PayloadSizeAt = 4;
constexpr std::size_t DigestAt = 8;
constexpr std::size_t DigestSize = 32;
constexpr std::size_t VersionSizeAt = 40;
constexpr std::size_t VersionAt = 41;

constexpr char Blank = '\xff';

} // namespace

FlashChip::FlashChip() : bytes(Size, Blank) { }

FlashChip::FlashChip(std::string content) : bytes(std::move(content))
{
    bytes.resize(Size, Blank);
}

void FlashChip::eraseSector(std::size_t number)
{
    bytes.replace(number * SectorSize, SectorSize, SectorSize, Blank);
}

void FlashChip::program(std::size_t position, const std::string &data)
{
    for (std::size_t i = 0; i < data.size(); ++i) {
        char &byte = bytes[position + i];
        byte = static_cast<char>(byte & data[i]);
    }
}

std::array<FlashChip::Part, 2> FlashChip::parts(const FirmwareImage &image)
{
    return {{{Firmware, image.firmwareVersion, image.firmware},
        {Configuration, image.configurationRevision, image.configuration}}};
}

std::string FlashChip::Part::descriptor() const
{
    std::string page(Mark);
    for (int shift = 0; shift < 32; shift += 8) {
        page += static_cast<char>(payload.size() >> shift);
    }
    return page + sha256(payload) + static_cast<char>(version.size()) + version;
}

std::string FlashChip::version(const Region &region) const
{
    const std::string page = bytes.substr(region.start, PageSize);
    if (page.compare(0, Mark.size(), Mark) != 0) {
        return {};
    }
    std::uint32_t size = 0;
    for (std::size_t i = 4; i > 0; --i) {
        size = size << 8 | static_cast<unsigned char>(page[PayloadSizeAt + i - 1]);
    }
    const auto versionSize = static_cast<unsigned char>(page[VersionSizeAt]);
    if (size > region.size - PageSize || versionSize > FirmwareImage::MaximumText) {
        return {};
    }
    const bool isWhole =
        sha256(bytes.substr(region.start + PageSize, size)) == page.substr(DigestAt, DigestSize);
    return isWhole ? page.substr(VersionAt, versionSize) : std::string();
}

void FlashChip::load(const FirmwareImage &image)
{
    bytes.assign(Size, Blank);
    for (const Part &part : parts(image)) {
        program(part.payloadStart(), part.payload);
        program(part.region.start, part.descriptor());
    }
}

} // namespace bench
