#pragma once

#include <SQLiteCpp/Database.h>

#include <functional>
#include <string>
#include <type_traits>

namespace bench {

/// Whether a committed change survives a power cut. Every change survives the end of its process.
enum class Durability { Lasting, Relaxed };

/**
 * The database of a bench, "bench.sqlite" in the bench's directory: one connection, its schema and its
 * transactions. It knows no rule.
 *
 * Any number of processes and threads may use one bench, each through an object of its own. Whoever waits for
 * another one's transaction is refused after five seconds. Every function throws Refused, and no other
 * exception of the database leaves it.
 */
class BenchStore
{
public:
    /// Opens the bench in that directory and, where its schema is an older one, upgrades it. Refused when
    /// there is no bench, it cannot be read, it is damaged or its schema is newer. A symbolic link is not
    /// followed. A bench that may be read but not written is opened for reading.
    explicit BenchStore(const std::string &directory);

    /// Makes a bench in that directory, with the directories above it, that holds what `fill` puts there.
    /// Refused for a directory that holds other files and, unless `replace` is set, for one that holds a
    /// bench. What is replaced gives way atomically; what is refused leaves everything as it was.
    static void create(
        const std::string &directory, bool replace, const std::function<void(BenchStore &store)> &fill);

    /// What `work` returns, run on one state of the database.
    template <typename Work>
    auto read(const Work &work) const
    {
        return transact(BeginReading, work);
    }

    /// What `work` returns, run while nobody else changes the database; commits what it did unless it throws.
    /// A change inside another one is a part of that.
    template <typename Work>
    auto change(const Work &work, Durability durability = Durability::Lasting)
    {
        return transact(durability == Durability::Lasting ? "PRAGMA synchronous = FULL; BEGIN IMMEDIATE"
                                                          : "PRAGMA synchronous = NORMAL; BEGIN IMMEDIATE",
            work);
    }

    /// For the functions that read() and change() run.
    SQLite::Database &database() const { return connection; }

private:
    struct File
    {
        std::string path;
    };
    explicit BenchStore(const File &database);

    static constexpr const char *BeginReading = "BEGIN";

    template <typename Work>
    auto transact(const char *begin, const Work &work) const
    {
        using Result = std::invoke_result_t<const Work &>;
        if constexpr (std::is_void_v<Result>) {
            run(begin, work);
        } else {
            Result result{};
            run(begin, [&] { result = work(); });
            return result;
        }
    }
    void run(const char *begin, const std::function<void()> &work) const;
    void clear();
    void upgrade();

    std::string file; ///< path of the database
    mutable SQLite::Database connection;
};

} // namespace bench
