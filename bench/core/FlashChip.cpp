#include "bench/core/FlashChip.h"

#include "bench/core/Bytes.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Sha256.h"

#include <utility>

namespace bench {

namespace {

// The page that describes a part of the chip: mark, size, digest, length of the version, version.
const std::string_view Mark("TVRG");
constexpr std::size_t SizeAt = 4;
constexpr std::size_t VersionSizeAt = SizeAt + 4 + DigestSize;

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
    return std::string(Mark) + littleEndian(payload.size()) + sha256(payload)
        + static_cast<char>(version.size()) + version;
}

std::string FlashChip::version(const Region &region) const
{
    const std::string page = bytes.substr(region.start, PageSize);
    const std::size_t size = littleEndianAt(page, SizeAt);
    const auto versionSize = static_cast<unsigned char>(page[VersionSizeAt]);
    if (size > region.size - PageSize || versionSize > FirmwareImage::MaximumText) {
        return {};
    }
    const std::string version = page.substr(VersionSizeAt + 1, versionSize);
    const std::string payload = bytes.substr(region.start + PageSize, size);
    const std::string expected = Part{region, version, payload}.descriptor();
    return page.compare(0, expected.size(), expected) == 0 ? version : std::string();
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
