#pragma once

#include <optional>
#include <string>

/// What a drive reports (serial number, model name, versions) is bytes, to be read as Latin-1.
namespace bench {

/// The UTF-8 text in which a character U+0000 to U+00FF stands for each byte, and the reverse of that, which
/// yields nothing for a character above U+00FF.
std::string textFromBytes(const std::string &bytes);
std::optional<std::string> bytesFromText(const std::string &text);

} // namespace bench
