// SPDX-License-Identifier: MIT
#include <cstdlib>

namespace {

// Before everything else in the process: test programs, and those that they start, need no display unless
// they are given one.
[[gnu::constructor(101)]] void chooseOffscreen()
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
}

} // namespace
