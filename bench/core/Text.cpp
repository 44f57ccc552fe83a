#include "bench/core/Text.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace bench {

namespace {

constexpr char Digits[] = "0123456789abcdef";
constexpr std::string_view PlainSigns = "-_./,=:+%@"; // to a shell

/// The value of a hexadecimal digit, -1 for any other character.
int digitValue(char digit)
{
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string escapedByte(char byte)
{
    std::string digits = hexadecimal(std::string(1, byte));
    std::transform(digits.begin(), digits.end(), digits.begin(),
        [](char digit) { return digit >= 'a' ? static_cast<char>(digit - 0x20) : digit; });
    return "\\x" + digits;
}

} // namespace

std::string escaped(const std::string &bytes)
{
    std::string line;
    for (const char byte : bytes) {
        const bool isPlain = byte >= 0x20 && byte <= 0x7E && byte != '\\';
        line += isPlain ? std::string(1, byte) : escapedByte(byte);
    }
    return line;
}

std::string oneLine(const std::string &text)
{
    std::string line;
    for (const char byte : text) {
        const bool isControl = (byte >= 0 && byte < 0x20) || byte == 0x7F;
        line += isControl ? escapedByte(byte) : std::string(1, byte);
    }
    return line;
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
        const auto byte = bytes->compare(i + 1, 1, "x") == 0 && bytes->size() >= i + 4
            ? bytesFromHexadecimal(bytes->substr(i + 2, 2))
            : std::nullopt;
        if (!byte) {
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
    if (digits.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = digitValue(digits[i]);
        const int low = digitValue(digits[i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes += static_cast<char>(high << 4 | low);
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

std::string shellQuoted(const std::string &text)
{
    const bool isPlain = !text.empty() && std::all_of(text.begin(), text.end(), [](char letter) {
        const auto code = static_cast<unsigned char>(letter);
        return code > 0x7F || (code >= '0' && code <= '9') || ((code | 0x20) >= 'a' && (code | 0x20) <= 'z')
            || PlainSigns.find(letter) != std::string_view::npos;
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
