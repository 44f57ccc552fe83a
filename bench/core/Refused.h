#pragma once

#include <stdexcept>

namespace bench {

/// What the bench refuses to do: what() is one line of UTF-8 that says what was refused, why, and what would
/// work. Thrown by the functions of this directory, caught once by each program that calls them.
class Refused : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace bench
