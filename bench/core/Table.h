// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <iterator>
#include <string>

/// Tables whose rows have a name.
namespace bench {

/// The row with exactly that name; null when there is none.
template <typename Table>
auto findRow(const Table &table, const std::string &name) -> decltype(&*std::begin(table))
{
    const auto row = std::find_if(std::begin(table), std::end(table),
        [&name](const auto &candidate) { return name == candidate.name; });
    return row == std::end(table) ? nullptr : &*row;
}

/// The names of all rows, separated by commas.
template <typename Table>
std::string rowNames(const Table &table)
{
    std::string names;
    for (const auto &row : table) {
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    return names;
}

} // namespace bench
