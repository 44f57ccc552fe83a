#include "bench/core/FirmwareImage.h"

#include "bench/core/Bytes.h"
#include "bench/core/Files.h"
#include "bench/core/Refused.h"
#include "bench/core/Sha256.h"

#include <algorithm>
#include <cstring>

namespace bench {

namespace {

// Byte positions in the header; all numbers are little-endian.
const std::string_view Magic("TFW1\r\n\x1a\n", 8);
constexpr std::size_t FormatAt = 8;
constexpr std::size_t BridgeAt = 12;
constexpr std::size_t FirmwareVersionAt = 16;
constexpr std::size_t ConfigurationRevisionAt = 48;
constexpr std::size_t FirmwareSizeAt = 80;
constexpr std::size_t ConfigurationSizeAt = 84;
constexpr std::size_t FirmwareDigestAt = 88;
constexpr std::size_t ConfigurationDigestAt = 120;
constexpr std::size_t HeaderSize = 152;
constexpr std::uint32_t ImageFormat = 1;

/// A text fills its field with zero bytes to the end; anything after the first of them is a damaged header.
std::string textAt(const std::string &file, std::size_t position, const char *what)
{
    const std::string field = file.substr(position, FirmwareImage::MaximumText);
    std::string text = field.substr(0, field.find('\0'));
    const auto zeros = static_cast<std::size_t>(std::count(field.begin(), field.end(), '\0'));
    require(!text.empty() && text.size() + zeros == field.size(), std::string("has no valid ") + what);
    return text;
}

std::size_t sizeAt(const std::string &file, std::size_t position, std::size_t maximum, const char *what)
{
    const std::uint32_t size = littleEndianAt(file, position);
    if (size == 0 || size > maximum) {
        throw Refused(std::string("has a ") + what + " of " + std::to_string(size) + " bytes; 1 to "
            + std::to_string(maximum) + " fit into the flash chip");
    }
    return size;
}

std::string payloadAt(
    const std::string &file, std::size_t position, std::size_t size, std::size_t digestAt, const char *what)
{
    std::string payload = file.substr(position, size);
    require(sha256(payload) == file.substr(digestAt, DigestSize),
        std::string("is damaged: the digest of the ") + what + " does not match");
    return payload;
}

/// What the header says, for a file of `fileSize` bytes that begins with `header`.
FirmwareImage decodeHeader(const std::string &header, std::size_t fileSize)
{
    require(!header.empty(), "is empty");
    require(header.compare(0, Magic.size(), Magic.substr(0, header.size())) == 0,
        "is not a firmware image: it does not begin with \"TFW1\"");
    require(header.size() >= HeaderSize,
        "is truncated: " + std::to_string(header.size()) + " bytes, the header alone takes "
            + std::to_string(HeaderSize));
    const std::uint32_t format = littleEndianAt(header, FormatAt);
    require(format == ImageFormat,
        "has format version " + std::to_string(format) + ", only " + std::to_string(ImageFormat)
            + " is known");
    FirmwareImage image;
    image.bridge = static_cast<std::int32_t>(littleEndianAt(header, BridgeAt));
    require(std::strcmp(bridgeName(image.bridge), "none") != 0,
        "is for an unknown bridge, code " + std::to_string(image.bridge));
    image.firmwareVersion = textAt(header, FirmwareVersionAt, "firmware version");
    image.configurationRevision = textAt(header, ConfigurationRevisionAt, "configuration revision");
    const std::size_t expected = HeaderSize
        + sizeAt(header, FirmwareSizeAt, FirmwareImage::MaximumFirmware, "firmware")
        + sizeAt(header, ConfigurationSizeAt, FirmwareImage::MaximumConfiguration, "configuration");
    require(fileSize == expected,
        std::string(fileSize < expected ? "is truncated" : "has bytes after its end") + ": "
            + std::to_string(fileSize) + " bytes, its header says " + std::to_string(expected));
    return image;
}

std::string madeUpPayload(const std::string &seed, std::size_t size)
{
    std::string payload;
    std::string block = seed;
    while (payload.size() < size) {
        block = sha256(block);
        payload += block;
    }
    payload.resize(size);
    return payload;
}

} // namespace

FirmwareImage FirmwareImage::forModel(
    const Model &model, const std::string &firmwareVersion, const std::string &configurationRevision)
{
    const std::string name = model.name;
    FirmwareImage image;
    image.bridge = model.chipset;
    image.firmwareVersion = firmwareVersion;
    image.configurationRevision = configurationRevision;
    image.firmware = madeUpPayload(
        name + " firmware " + firmwareVersion, static_cast<std::size_t>(36 + 4 * model.chipset) * 1024 - 300);
    image.configuration = madeUpPayload(name + " configuration " + configurationRevision, 2 * 1024 + 40);
    return image;
}

std::string FirmwareImage::encode() const
{
    std::string file(HeaderSize, '\0');
    const auto put = [&file](std::size_t position, std::string_view bytes) {
        file.replace(position, bytes.size(), bytes);
    };
    put(0, Magic);
    put(FormatAt, littleEndian(ImageFormat));
    put(BridgeAt, littleEndian(static_cast<std::uint32_t>(bridge)));
    put(FirmwareVersionAt, std::string_view(firmwareVersion).substr(0, MaximumText));
    put(ConfigurationRevisionAt, std::string_view(configurationRevision).substr(0, MaximumText));
    put(FirmwareSizeAt, littleEndian(firmware.size()));
    put(ConfigurationSizeAt, littleEndian(configuration.size()));
    put(FirmwareDigestAt, sha256(firmware));
    put(ConfigurationDigestAt, sha256(configuration));
    return file + firmware + configuration;
}

FirmwareImage FirmwareImage::decode(const std::string &file)
{
    FirmwareImage image = decodeHeader(file.substr(0, HeaderSize), file.size());
    const std::size_t firmwareSize = littleEndianAt(file, FirmwareSizeAt);
    image.firmware = payloadAt(file, HeaderSize, firmwareSize, FirmwareDigestAt, "firmware");
    image.configuration =
        payloadAt(file, HeaderSize + firmwareSize, std::string::npos, ConfigurationDigestAt, "configuration");
    return image;
}

FirmwareImage FirmwareImage::readHeader(const std::string &path)
{
    const auto [header, size] = readBeginning(path, HeaderSize);
    return decodeHeader(header, size);
}

FirmwareImage FirmwareImage::read(const std::string &path, std::size_t limit)
{
    return decode(readFile(path, MaximumFile).substr(0, limit));
}

} // namespace bench
