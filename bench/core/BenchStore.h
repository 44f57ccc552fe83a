#pragma once

#include <SQLiteCpp/Database.h>

#include <functional>
#include <string>

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

    /// Runs `work` on one state of the database.
    void read(const std::function<void()> &work) const;

    /// Runs `work` while nobody else changes the database, and commits what it did unless it throws. A change
    /// inside another one is a part of that.
    void change(const std::function<void()> &work, Durability durability = Durability::Lasting);

    /// For the functions that read() and change() run.
    SQLite::Database &database() const { return connection; }

private:
    struct File
    {
        std::string path;
    };
    explicit BenchStore(const File &database);
    void transact(const char *begin, const std::function<void()> &work) const;
    void clear();
    void upgrade();

    std::string file; ///< path of the database
    mutable SQLite::Database connection;
};

} // namespace bench
