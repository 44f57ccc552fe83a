// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <vector>

/// The value in the middle, which one slow turn does not move. Needs at least one value.
inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}
