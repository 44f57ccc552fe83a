// SPDX-License-Identifier: MIT
#include "bench/core/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>

namespace bench {

namespace {

std::string escape(unsigned char byte)
{
    char text[8];
    std::snprintf(text, sizeof text, "\\x%02X", byte);
    return text;
}

bool isContinuation(char letter)
{
    return (static_cast<unsigned char>(letter) & 0xC0U) == 0x80U;
}

/// How many bytes the character at that position takes; 0 for what is no UTF-8.
std::size_t lengthAt(const std::string &text, std::size_t position)
{
    const auto lead = static_cast<unsigned char>(text[position]);
    const std::size_t length = lead < 0x80 ? 1
        : lead < 0xC2                      ? 0
        : lead < 0xE0                      ? 2
        : lead < 0xF0                      ? 3
        : lead < 0xF5                      ? 4
                                           : 0;
    const std::string rest = text.substr(position + 1, length == 0 ? 0 : length - 1);
    return rest.size() + 1 >= length && std::all_of(rest.begin(), rest.end(), isContinuation) ? length : 0;
}

bool isControl(const std::string &character)
{
    const auto lead = static_cast<unsigned char>(character.front());
    const bool isSecondSet =
        lead == 0xC2 && static_cast<unsigned char>(character.back()) < 0xA0; // U+0080 to U+009F
    return lead < 0x20 || lead == 0x7F || isSecondSet;
}

} // namespace

std::string textFromBytes(const std::string &bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80) {
            text += byte;
        } else {
            text += static_cast<char>(0xC0U | code >> 6U);
            text += static_cast<char>(0x80U | (code & 0x3FU));
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
        if ((lead != 0xC2 && lead != 0xC3) || lengthAt(text, i) != 2) {
            return std::nullopt;
        }
        bytes += static_cast<char>((lead & 0x03U) << 6U | (static_cast<unsigned char>(text[++i]) & 0x3FU));
    }
    return bytes;
}

std::string escaped(const std::string &text)
{
    std::string line;
    for (const char byte : bytesFromText(text).value_or(text)) {
        line += byte >= 0x20 && byte <= 0x7E && byte != '\\' ? std::string(1, byte)
                                                             : escape(static_cast<unsigned char>(byte));
    }
    return line;
}

std::optional<std::string> unescaped(const std::string &text)
{
    const std::optional<std::string> bytes = bytesFromText(text);
    std::string plain;
    for (std::size_t i = 0; bytes && i < bytes->size(); ++i) {
        if (bytes->at(i) != '\\') {
            plain += bytes->at(i);
            continue;
        }
        const char *const digits = bytes->data() + i + 2;
        std::uint8_t byte = 0;
        if (bytes->compare(i, 2, "\\x") != 0 || i + 4 > bytes->size()
            || std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) {
            return std::nullopt;
        }
        plain += static_cast<char>(byte);
        i += 3;
    }
    return bytes ? std::optional(textFromBytes(plain)) : std::nullopt;
}

std::string oneLine(const std::string &text)
{
    std::string line;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = lengthAt(text, i);
        const std::string character = text.substr(i, std::max<std::size_t>(length, 1));
        line += length == 0 || isControl(character) ? escape(static_cast<unsigned char>(character.back()))
                                                    : character;
        i += character.size();
    }
    return line;
}

std::string shortened(const std::string &line)
{
    constexpr std::size_t Maximum = 300;
    if (line.size() <= Maximum) {
        return line;
    }
    // No character is cut in two.
    std::size_t end = Maximum * 3 / 5;
    std::size_t begin = line.size() - (Maximum - end - 5);
    for (; isContinuation(line[end]); --end) { }
    for (; isContinuation(line[begin]); ++begin) { }
    return line.substr(0, end) + " ... " + line.substr(begin);
}

std::string shellQuoted(const std::string &text)
{
    constexpr std::string_view Plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./,=:+%@";
    if (!text.empty() && text.find_first_not_of(Plain) == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const char letter : text) {
        quoted += letter == '\'' ? "'\\''" : letter == '\n' ? "'$'\\n''" : std::string(1, letter);
    }
    return quoted + '\'';
}

std::optional<std::int64_t> numberFromText(const std::string &text)
{
    const bool isHexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    const char *const begin = text.data() + (isHexadecimal ? 2 : 0);
    const char *const end = text.data() + text.size();
    std::int64_t number = 0;
    const auto [last, error] = std::from_chars(begin, end, number, isHexadecimal ? 16 : 10);
    const bool hasSecondSign = isHexadecimal && begin != end && *begin == '-';
    return error == std::errc() && last == end && !hasSecondSign ? std::optional(number) : std::nullopt;
}

std::string wholeNumber(std::int64_t minimum, std::int64_t maximum)
{
    return "a whole number from " + std::to_string(minimum) + " to " + std::to_string(maximum);
}

} // namespace bench
