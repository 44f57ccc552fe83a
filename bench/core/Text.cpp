#include "bench/core/Text.h"

#include "bench/core/Bytes.h"
#include "bench/core/Latin1.h"

#include <charconv>
#include <cstdio>

namespace bench {

namespace {

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

} // namespace bench
