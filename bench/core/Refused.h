// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Text.h"

#include <stdexcept>
#include <string>

namespace bench {

/// What the bench refuses to do: what() is one line of UTF-8, at most 300 bytes, that says what was
/// refused, why, and what would work. Thrown by the functions of this directory, caught once by each program
/// that calls them.
class Refused : public std::runtime_error
{
public:
    explicit Refused(const std::string &reason) : std::runtime_error(shortened(oneLine(reason))) { }
};

/// Refused with the reason unless `holds`.
inline void require(bool holds, const std::string &reason)
{
    if (!holds) {
        throw Refused(reason);
    }
}

/// What `work` returns; what it refuses is refused as "<action>: <reason>".
template <typename Work>
auto attempt(const std::string &action, const Work &work)
{
    try {
        return work();
    } catch (const Refused &refused) {
        throw Refused(action + ": " + refused.what());
    }
}

} // namespace bench
