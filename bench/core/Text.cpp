#include "bench/core/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>

namespace bench {

namespace {

constexpr char Digits[] = "0123456789abcdef";
/// What needs no quoting in a shell.
constexpr std::string_view Plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./,=:+%@";

/// The text with \xNN for each byte that is not plain.
template <typename Predicate>
std::string escapedUnless(const std::string &text, Predicate isPlain)
{
    std::string line;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        char escape[8] = {letter};
        if (!isPlain(byte)) {
            std::snprintf(escape, sizeof escape, "\\x%02X", byte);
        }
        line += escape;
    }
    return line;
}

} // namespace

std::string escaped(const std::string &bytes)
{
    return escapedUnless(
        bytes, [](unsigned char byte) { return byte >= 0x20 && byte <= 0x7E && byte != '\\'; });
}

std::string oneLine(const std::string &text)
{
    return escapedUnless(text, [](unsigned char byte) { return byte >= 0x20 && byte != 0x7F; });
}

std::optional<std::string> unescaped(const std::string &text)
{
    std::optional<std::string> bytes = bytesFromText(text);
    if (!bytes) {
        return std::nullopt;
    }
    std::string plain;
    for (std::size_t i = 0; i < bytes->size(); ++i) {
        if (bytes->at(i) != '\\') {
            plain += bytes->at(i);
            continue;
        }
        const auto byte =
            bytes->compare(i, 2, "\\x") == 0 ? bytesFromHexadecimal(bytes->substr(i + 2, 2)) : std::nullopt;
        if (!byte || byte->empty()) {
            return std::nullopt;
        }
        plain += *byte;
        i += 3;
    }
    return plain;
}

std::string textFromBytes(const std::string &bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80) {
            text += byte;
        } else {
            text += static_cast<char>(0xC0 | code >> 6);
            text += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return text;
}

std::optional<std::string> bytesFromText(const std::string &text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            bytes += text[i];
            continue;
        }
        // U+0080 to U+00FF take two bytes, the first of which is C2 or C3.
        const bool isLatin1 = (lead == 0xC2 || lead == 0xC3) && i + 1 < text.size();
        const auto trail = isLatin1 ? static_cast<unsigned char>(text[i + 1]) : 0U;
        if ((trail & 0xC0U) != 0x80U) {
            return std::nullopt;
        }
        bytes += static_cast<char>((lead & 0x03U) << 6 | (trail & 0x3FU));
        ++i;
    }
    return bytes;
}

std::string hexadecimal(const std::string &bytes)
{
    std::string digits;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        digits += Digits[code >> 4];
        digits += Digits[code & 0x0F];
    }
    return digits;
}

std::optional<std::string> bytesFromHexadecimal(const std::string &digits)
{
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const char *const begin = digits.data() + i;
        std::uint8_t byte = 0;
        if (i + 2 > digits.size() || std::from_chars(begin, begin + 2, byte, 16).ptr != begin + 2) {
            return std::nullopt;
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::optional<std::int64_t> numberFromText(const std::string &text)
{
    const bool isHexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    const char *const begin = text.data() + (isHexadecimal ? 2 : 0);
    const char *const end = text.data() + text.size();
    std::int64_t number = 0;
    const auto [last, error] = std::from_chars(begin, end, number, isHexadecimal ? 16 : 10);
    const bool hasSecondSign = isHexadecimal && begin != end && *begin == '-';
    if (error != std::errc() || last != end || hasSecondSign) {
        return std::nullopt;
    }
    return number;
}

std::string wholeNumber(std::int64_t minimum, std::int64_t maximum)
{
    return "a whole number from " + std::to_string(minimum) + " to " + std::to_string(maximum);
}

std::string littleEndian(std::size_t number)
{
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(number >> shift);
    }
    return bytes;
}

std::uint32_t littleEndianAt(const std::string &bytes, std::size_t position)
{
    std::uint32_t number = 0;
    for (std::size_t i = 4; i > 0; --i) {
        number = number << 8 | static_cast<unsigned char>(bytes[position + i - 1]);
    }
    return number;
}

std::string shellQuoted(const std::string &text)
{
    const bool isPlain = !text.empty() && std::all_of(text.begin(), text.end(), [](char letter) {
        return static_cast<unsigned char>(letter) > 0x7F || Plain.find(letter) != std::string_view::npos;
    });
    if (isPlain) {
        return text;
    }
    std::string quoted = "'";
    for (const char letter : text) {
        if (letter == '\'') {
            quoted += "'\\''";
        } else if (letter == '\n') {
            quoted += "'$'\\n''";
        } else {
            quoted += letter;
        }
    }
    return quoted + '\'';
}

} // namespace bench
