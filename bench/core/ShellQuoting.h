#pragma once

#include <string>

namespace bench {

/// The text as a word of a shell's command line: quoted where it holds more than plain letters.
std::string shellQuoted(const std::string &text);

} // namespace bench
