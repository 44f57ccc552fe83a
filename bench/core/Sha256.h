#pragma once

#include <string>

namespace bench {

constexpr std::size_t DigestSize = 32;

/// The SHA-256 digest of the bytes, DigestSize bytes.
std::string sha256(const std::string &bytes);

} // namespace bench
