// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Connection.h"
#include "bench/core/Drive.h"

#include <SQLiteCpp/Statement.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace bench {

/// What the host computer of a bench holds besides drives.
struct HostState
{
    bool companionInstalled = false; ///< the companion product is
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(HostState, companionInstalled)

/**
 * The database of a bench, "bench.sqlite" in the bench's directory: the documents of the drives. It knows no
 * rule.
 *
 * Any number of processes and threads may use one bench, each through an object of its own. Every function
 * throws Refused.
 */
class Store
{
public:
    /// Opens the bench in that directory. Refused when there is no bench, it cannot be read, it is damaged or
    /// is one of another version. A symbolic link is not followed. A bench that may be read but not written
    /// is opened for reading, and no file is left beside it.
    explicit Store(const std::string &directory);

    const std::string &directory() const { return place; }

    /// See Connection.
    template <typename Work>
    auto read(const Work &work) const
    {
        return connection.read(work);
    }
    template <typename Work>
    auto change(const Work &work)
    {
        return connection.change(work);
    }

    // What follows is for the functions that read() and change() run. Whatever reads a drive, or sets the
    // host's state, looks at all of them, so that nobody writes beside a damaged one as if nothing were
    // wrong; it is named in the refusal.

    /// All drives, plugged in or not, by serial number.
    std::vector<Drive> drives() const;
    std::optional<Drive> find(const std::string &serial) const;
    /// Adds a drive whose serial number is not on the bench.
    void insert(const Drive &drive) { insertDocument(drive.serial, drive); }
    /// Writes a drive that is on the bench.
    void update(const Drive &drive) { updateDocument(drive.serial, drive); }
    /// Takes a drive away, a damaged one too; false when there is none.
    bool remove(const std::string &serial);

    HostState host() const;
    void setHost(const HostState &host);

private:
    static constexpr const char *HostName = ""; ///< no serial number is empty

    /// A document as it is stored.
    struct Row
    {
        std::string name; ///< the serial number of a drive, or HostName
        std::string document;
    };
    friend void createBench(
        const std::string &directory, bool replace, const std::function<void(Store &store)> &fill);
    Store(std::string directory, const std::string &file);

    static std::string fileIn(const std::string &directory);
    bool isBench() const;
    void requireThisVersion() const;
    void replaceAll(const std::function<void(Store &store)> &fill);
    Row checkedRow(const SQLite::Statement &row) const;
    std::vector<Row> rows() const;
    Drive parsed(const Row &row) const;
    void insertDocument(const std::string &name, const Json &document);
    void updateDocument(const std::string &name, const Json &document);

    std::string place; ///< the directory
    Connection connection;
};

} // namespace bench
