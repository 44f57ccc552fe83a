// SPDX-License-Identifier: MIT
#include "bench/core/Image.h"

#include "bench/core/Drive.h"
#include "bench/core/Files.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <string_view>

#include <zlib.h>

namespace bench {

namespace {

// Magic, header as JSON on one line, content, checksum of everything before it as hexadecimal digits.
constexpr std::string_view Magic("TFW2\r\n\x1a\n", 8);
constexpr std::size_t MaximumHeader = 1024;
constexpr std::size_t ChecksumSize = 8;

std::string checksumOf(const char *bytes, std::size_t size)
{
    char digits[ChecksumSize + 1];
    std::snprintf(
        digits, sizeof digits, "%08lx", ::crc32(0, reinterpret_cast<const Bytef *>(bytes), uInt(size)));
    return digits;
}

/// Byte position of the content.
std::size_t contentAt(const std::string &file)
{
    const std::size_t end = file.substr(0, MaximumHeader).find('\n', Magic.size());
    require(!file.empty(), "is empty");
    require(file.compare(0, Magic.size(), Magic.substr(0, file.size())) == 0,
        "is not a firmware image: it does not begin with \"TFW2\"");
    require(end != std::string::npos,
        file.size() < MaximumHeader ? "is truncated in its header" : "has no valid header");
    return end + 1;
}

Image headerOf(const std::string &file)
{
    const std::size_t end = contentAt(file);
    const Json json = Json::parse(
        file.begin() + std::ptrdiff_t(Magic.size()), file.begin() + std::ptrdiff_t(end), nullptr, false);
    attempt("has no valid header", [&json] { checkLike(json, Image(), ""); });
    Image image = json;
    require(std::strcmp(bridgeName(image.bridge), "none") != 0,
        "is for an unknown bridge, code " + std::to_string(image.bridge));
    for (const std::string *version : {&image.firmware, &image.configuration}) {
        const auto bytes = bytesFromText(*version);
        require(bytes && !bytes->empty() && bytes->size() <= Image::MaximumText, "has no valid versions");
    }
    require(image.length > 0 && image.length <= std::int64_t(Image::MaximumFile),
        "has no valid length, " + std::to_string(image.length));
    return image;
}

} // namespace

std::string imageFile(const Model &model, const std::string &firmware, const std::string &configuration)
{
    const Image image{model.chipset, firmware, configuration, (38 + 4 * model.chipset) * 1024};
    std::string file = std::string(Magic) + Json(image).dump() + '\n';
    std::mt19937 numbers(
        static_cast<unsigned>(::crc32(0, reinterpret_cast<const Bytef *>(file.data()), uInt(file.size()))));
    for (std::int64_t i = 0; i < image.length; ++i) {
        file += static_cast<char>(numbers());
    }
    return file + checksumOf(file.data(), file.size());
}

Image readImage(const std::string &path, std::size_t limit)
{
    const std::string whole = readFile(path, Image::MaximumFile + 1);
    require(whole.size() <= Image::MaximumFile,
        "is too large, more than " + std::to_string(Image::MaximumFile) + " bytes");
    const std::string file = whole.substr(0, limit);
    Image image = headerOf(file);
    const std::size_t end = contentAt(file) + std::size_t(image.length);
    const std::size_t expected = end + ChecksumSize;
    require(file.size() == expected,
        std::string(file.size() < expected ? "is truncated" : "has bytes after its end") + ": "
            + std::to_string(file.size()) + " bytes, its header says " + std::to_string(expected));
    require(checksumOf(file.data(), end) == file.substr(end), "is damaged: its checksum does not match");
    return image;
}

Image readImageHeader(const std::string &path)
{
    return headerOf(readFile(path, MaximumHeader));
}

std::string imagePath(const std::string &benchDirectory, const std::string &path)
{
    const std::string own = benchDirectory + "/images/" + path.substr(path.rfind('/') + 1);
    std::error_code error;
    return std::filesystem::exists(own, error) ? own : path;
}

} // namespace bench
