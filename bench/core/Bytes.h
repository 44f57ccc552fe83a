#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace bench {

/// The bytes as lower-case hexadecimal digits, and the reverse, which yields nothing for anything else.
std::string hexadecimal(const std::string &bytes);
std::optional<std::string> bytesFromHexadecimal(const std::string &digits);

/// The number as four bytes, the least significant one first.
std::string littleEndian(std::size_t number);
/// The reverse of that: the number in the four bytes at that position.
std::uint32_t littleEndianAt(const std::string &bytes, std::size_t position);

} // namespace bench
