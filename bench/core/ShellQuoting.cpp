#include "bench/core/ShellQuoting.h"

#include <algorithm>
#include <string_view>

namespace bench {

namespace {

/// What needs no quoting in a shell.
constexpr std::string_view Plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./,=:+%@";

} // namespace

std::string shellQuoted(const std::string &text)
{
    const bool isPlain = !text.empty() && std::all_of(text.begin(), text.end(), [](char letter) {
        return static_cast<unsigned char>(letter) > 0x7F || Plain.find(letter) != std::string_view::npos;
    });
    if (isPlain) {
        return text;
    }
    std::string quoted = "'";
    for (const char letter : text) {
        if (letter == '\'') {
            quoted += "'\\''";
        } else if (letter == '\n') {
            quoted += "'$'\\n''";
        } else {
            quoted += letter;
        }
    }
    return quoted + '\'';
}

} // namespace bench
