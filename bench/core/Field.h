#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace bench {

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
