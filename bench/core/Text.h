// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Texts are UTF-8. What a drive reports (serial number, model, versions) is bytes, to be read as Latin-1: in
/// a text a character U+0000 to U+00FF stands for each of them.
namespace bench {

std::string textFromBytes(const std::string &bytes);
/// Nothing for a text with a character above U+00FF.
std::optional<std::string> bytesFromText(const std::string &text);

/// The text of a drive as plain ASCII for a person: control characters, backslashes and everything above
/// U+007E are written as \xNN.
std::string escaped(const std::string &text);
/// The reverse of escaped(): \xNN stands for any byte. Nothing for a backslash that begins no \xNN and for a
/// character above U+00FF.
std::optional<std::string> unescaped(const std::string &text);

/// Any text as one line: control characters, and bytes that are no UTF-8, are written as \xNN.
std::string oneLine(const std::string &text);
/// The line, at most 300 bytes of it: what is too much is left out in its middle.
std::string shortened(const std::string &line);

/// The text as a word of a shell's command line.
std::string shellQuoted(const std::string &text);

/// A whole number in decimal digits or, with 0x in front, in hexadecimal ones; nothing for anything else.
std::optional<std::int64_t> numberFromText(const std::string &text);
/// What a number within these limits is called, both included: "a whole number from 1 to 5".
std::string wholeNumber(std::int64_t minimum, std::int64_t maximum);

} // namespace bench
