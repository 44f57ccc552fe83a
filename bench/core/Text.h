#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Texts are UTF-8. What a drive reports (serial number, model name, versions) is bytes, to be read as
/// Latin-1.
namespace bench {

/// Bytes as one line for a person: control characters, bytes above 7E and backslashes are written as \xNN.
std::string escaped(const std::string &bytes);

/// The text with its control characters written as \xNN, so that it is one line.
std::string oneLine(const std::string &text);

/// The bytes of a text in which \xNN stands for any byte; the reverse of escaped(). Nothing for a backslash
/// that begins no \xNN and for a character above U+00FF.
std::optional<std::string> unescaped(const std::string &text);

/// The text in which a character U+0000 to U+00FF stands for each byte, and the reverse of that, which yields
/// nothing for a character above U+00FF.
std::string textFromBytes(const std::string &bytes);
std::optional<std::string> bytesFromText(const std::string &text);

/// The bytes as lower-case hexadecimal digits, and the reverse, which yields nothing for anything else.
std::string hexadecimal(const std::string &bytes);
std::optional<std::string> bytesFromHexadecimal(const std::string &digits);

/// A whole number in decimal digits or, with 0x in front, in hexadecimal ones; nothing for anything else.
std::optional<std::int64_t> numberFromText(const std::string &text);

/// What a number within these limits is called, both included: "a whole number from 1 to 5".
std::string wholeNumber(std::int64_t minimum, std::int64_t maximum);

/// The number as four bytes, the least significant one first.
std::string littleEndian(std::size_t number);
/// The reverse of that: the number in the four bytes at that position.
std::uint32_t littleEndianAt(const std::string &bytes, std::size_t position);

/// The text as a word of a shell's command line: quoted where it holds more than plain letters.
std::string shellQuoted(const std::string &text);

} // namespace bench
