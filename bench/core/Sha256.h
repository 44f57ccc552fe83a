#pragma once

#include <string>

namespace bench {

/// The SHA-256 digest of the bytes, 32 bytes.
std::string sha256(const std::string &bytes);

} // namespace bench
