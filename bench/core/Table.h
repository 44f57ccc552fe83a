#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <variant>

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

/// The names of all rows, each behind `prefix`, separated by commas.
template <typename Table>
std::string rowNames(const Table &table, const char *prefix = "")
{
    std::string names;
    for (const auto &row : table) {
        names += (names.empty() ? "" : ", ") + (prefix + std::string(row.name));
    }
    return names;
}

/// A stored field of a plain struct. From a table of these the columns of the database, the members in JSON
/// and the limits are made.
template <typename Owner>
struct Field
{
    const char *name;
    std::variant<bool Owner::*, std::int64_t Owner::*, std::string Owner::*> member;
    std::int64_t minimum = 0; ///< of a number, both limits included
    std::int64_t maximum = std::int64_t(1) << 53; ///< what JSON carries exactly
    bool isUtf8 = false; ///< a text in UTF-8; other texts are bytes

    /// Calls `work` with the field of this owner.
    template <typename SomeOwner, typename Work>
    void visit(SomeOwner &owner, const Work &work) const
    {
        std::visit([&](auto pointer) { work(owner.*pointer); }, member);
    }
};

} // namespace bench
