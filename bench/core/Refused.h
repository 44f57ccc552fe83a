#pragma once

#include "bench/core/Text.h"

#include <stdexcept>
#include <string>

namespace bench {

/// What the bench refuses to do: what() is one line of UTF-8 that says what was refused, why, and what would
/// work. Thrown by the functions of this directory, caught once by each program that calls them.
class Refused : public std::runtime_error
{
public:
    /// Control characters, which a path or an argument may hold, are written as \xNN.
    explicit Refused(const std::string &reason) : std::runtime_error(oneLine(reason)) { }
};

/// Refused with the reason unless `holds`.
inline void require(bool holds, const std::string &reason)
{
    if (!holds) {
        throw Refused(reason);
    }
}

} // namespace bench
