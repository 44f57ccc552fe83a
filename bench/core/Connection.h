// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Refused.h"

#include <SQLiteCpp/Database.h>

#include <functional>
#include <string>
#include <type_traits>

namespace bench {

/// The refusal of a database that cannot be read as what it was.
class Damaged : public Refused
{
public:
    Damaged(const std::string &file, const std::string &reason);
};

/**
 * A connection to a database of SQLite, and its transactions. It is used on one thread.
 *
 * Whoever waits for another one's transaction is refused after five seconds. Every function throws Refused,
 * and no other exception of the database leaves it.
 */
class Connection
{
public:
    /// Opens the database, which is no link. One that may be read but not written is opened for reading, and
    /// no file is left beside it.
    explicit Connection(const std::string &file);

    const std::string &file() const { return path; }
    /// For what read() and change() run.
    SQLite::Database &database() const { return connection; }

    /// What `work` returns, run on one state of the database.
    template <typename Work>
    auto read(const Work &work) const
    {
        return transact(true, work);
    }
    /// What `work` returns, run while nobody else changes the database; commits what it did, durably, unless
    /// it throws. A change inside another one is a part of that. Refused, after the commit, when another file
    /// has taken the place of the database meanwhile, or none.
    template <typename Work>
    auto change(const Work &work)
    {
        return transact(false, work);
    }
    /// Has SQLite keep a write-ahead log from now on. Not inside a change.
    void keepLog();

private:
    template <typename Work>
    auto transact(bool isReading, const Work &work) const
    {
        using Result = std::invoke_result_t<const Work &>;
        if constexpr (std::is_void_v<Result>) {
            run(isReading, work);
        } else {
            Result result{};
            run(isReading, [&] { result = work(); });
            return result;
        }
    }
    void run(bool isReading, const std::function<void()> &work) const;

    std::string path;
    mutable SQLite::Database connection;
};

} // namespace bench
