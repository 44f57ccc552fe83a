#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Texts are UTF-8.
namespace bench {

/// Bytes as one line for a person: control characters, bytes above 7E and backslashes are written as \xNN.
std::string escaped(const std::string &bytes);

/// The text with its control characters written as \xNN, so that it is one line.
std::string oneLine(const std::string &text);

/// The bytes of a text in which \xNN stands for any byte; the reverse of escaped(). Nothing for a backslash
/// that begins no \xNN and for a character above U+00FF.
std::optional<std::string> unescaped(const std::string &text);

/// A whole number in decimal digits or, with 0x in front, in hexadecimal ones; nothing for anything else.
std::optional<std::int64_t> numberFromText(const std::string &text);

/// What a number within these limits is called, both included: "a whole number from 1 to 5".
std::string wholeNumber(std::int64_t minimum, std::int64_t maximum);

} // namespace bench
