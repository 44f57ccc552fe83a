// SPDX-License-Identifier: MIT
#include "bench/core/Creation.h"

#include "bench/core/Files.h"
#include "bench/core/Refused.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds LockTimeout(5);
constexpr std::chrono::milliseconds LockPollInterval(10);
/// The database, and what it is made as before it takes its place.
constexpr const char *Databases[] = {"bench.sqlite", "bench.sqlite.new"};
/// Of the database and of what SQLite keeps beside it.
constexpr const char *Suffixes[] = {"", "-wal", "-shm", "-journal"};

bool isOfBench(const std::string &name)
{
    if (name == "calls.log" || name == "images") {
        return true;
    }
    return std::any_of(std::begin(Databases), std::end(Databases), [&name](const std::string &database) {
        return std::any_of(std::begin(Suffixes), std::end(Suffixes),
            [&](const char *suffix) { return name == database + suffix; });
    });
}

bool holdsOtherFiles(const std::string &directory)
{
    std::error_code error;
    const fs::directory_iterator entries(directory, error);
    return !std::all_of(begin(entries), end(entries),
        [](const fs::directory_entry &entry) { return isOfBench(entry.path().filename().string()); });
}

void removeDatabase(const std::string &file)
{
    std::error_code error;
    for (const char *suffix : Suffixes) {
        fs::remove(file + suffix, error);
    }
}

/// Holds the lock of those who make a bench in the directory.
class CreationLock
{
public:
    explicit CreationLock(const std::string &directory)
        : descriptor(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        require(descriptor >= 0,
            "cannot open " + directory + ": " + systemReason() + "; name another with --bench");
        const auto end = std::chrono::steady_clock::now() + LockTimeout;
        while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            if (std::chrono::steady_clock::now() > end) {
                ::close(descriptor);
                throw Refused(directory + " was in use by another process for 5 seconds; try again");
            }
            std::this_thread::sleep_for(LockPollInterval);
        }
    }
    ~CreationLock()
    {
        ::fsync(descriptor); // what was put into the directory lasts
        ::close(descriptor);
    }
    CreationLock(const CreationLock &) = delete;
    CreationLock &operator=(const CreationLock &) = delete;

private:
    int descriptor;
};

/// An empty file of the person's own, as readable and writable for others as the umask has it.
void makeFile(const std::string &file)
{
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    require(descriptor >= 0,
        "cannot write " + file + ": " + systemReason() + "; the directory must be writable and have room");
    ::close(descriptor);
}

} // namespace

void createBench(const std::string &directory, bool replace, const std::function<void(Store &store)> &fill)
{
    std::error_code error;
    fs::create_directories(directory, error);
    require(!error,
        "cannot make the directory " + directory + ": " + error.message() + "; name another with --bench");
    const CreationLock lock(directory);
    const std::string otherFiles =
        directory + " holds other files; name a new or an empty directory with --bench";
    require(!holdsOtherFiles(directory), otherFiles);

    const std::string file = directory + '/' + Databases[0];
    const std::string draft = directory + '/' + Databases[1];
    bool isReplaced = false;
    if (fs::file_size(file, error) > 0 && !error) {
        try {
            Store store(directory, Store::fileIn(directory));
            require(store.isBench(), otherFiles);
            require(replace, directory + " is a bench already; to make it anew, add --force");
            store.replaceAll(fill);
            isReplaced = true;
        } catch (const Damaged &) {
            if (!replace) {
                throw;
            }
        }
    }
    if (!isReplaced) {
        removeDatabase(draft); // what a killed process has left
        makeFile(draft);
        try {
            Store(directory, draft).replaceAll(fill);
        } catch (const Refused &) {
            removeDatabase(draft);
            throw;
        }
        // The draft is complete without a log. One that stands beside the old database, or is all that is
        // left of it, must not be taken for the new one's.
        fs::remove(draft + "-wal", error);
        fs::remove(draft + "-shm", error);
        removeDatabase(file);
        fs::rename(draft, file, error);
        require(!error, "cannot write " + file + ": " + error.message());
    }
    fs::remove(directory + "/calls.log", error);
    fs::remove_all(directory + "/images", error);
}

} // namespace bench
