#include "bench/core/Bytes.h"

#include <charconv>

namespace bench {

namespace {

constexpr char Digits[] = "0123456789abcdef";

} // namespace

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
        // Behind an odd number of digits stands the zero that ends the string.
        if (std::from_chars(begin, begin + 2, byte, 16).ptr != begin + 2) {
            return std::nullopt;
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
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

} // namespace bench
