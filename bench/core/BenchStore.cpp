#include "bench/core/BenchStore.h"

#include "bench/core/Bytes.h"
#include "bench/core/Refused.h"
#include "bench/core/Schema.h"
#include "bench/core/ShellQuoting.h"

#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds BusyTimeout(5);
constexpr std::chrono::milliseconds BusyPollInterval(2);
constexpr const char *FileName = "bench.sqlite";
/// Of the database and of what SQLite keeps beside it.
constexpr const char *Suffixes[] = {"", "-wal", "-shm", "-journal"};

std::string noBench(const std::string &directory, const std::string &reason)
{
    return directory + " is no bench that can be read: " + reason
        + "; make one with: drive-bench init --bench " + shellQuoted(directory);
}

std::string otherFiles(const std::string &directory)
{
    return directory + " holds other files; name a new or an empty directory with --bench";
}

Refused cannotWrite(const std::string &file, const std::string &reason)
{
    return Refused("cannot write " + file + ": " + reason + "; the directory must be writable and have room");
}

/// What the failure of a call to the database means for a person.
Refused explained(const SQLite::Exception &exception, const std::string &file, bool isReading)
{
    const std::string reason = exception.what();
    const int code = exception.getErrorCode() & 0xFF;
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
        return Refused(file + " was in use by another process for 5 seconds; try again");
    }
    if (code == SQLITE_NOTADB || code == SQLITE_CORRUPT) {
        return Refused(file + " is damaged: " + reason + "; remove it and make a new bench");
    }
    if (isReading) {
        return Refused("cannot read " + file + ": " + reason
            + "; it must be readable, and its directory writable while a write-ahead log is there");
    }
    return cannotWrite(file, reason);
}

/// The path of the database in that directory, which is there and no link.
std::string existingFile(const std::string &directory)
{
    std::error_code error;
    const fs::path file = fs::canonical(directory, error) / FileName;
    require(!error, noBench(directory, error.message()));
    for (const char *suffix : Suffixes) {
        const std::string path = file.string() + suffix;
        require(!fs::is_symlink(fs::symlink_status(path, error)),
            path + " is a symbolic link, which is not followed; remove it");
    }
    const fs::file_status status = fs::symlink_status(file, error);
    require(fs::exists(status), noBench(directory, error.message()));
    require(
        fs::is_regular_file(status), noBench(directory, std::string(FileName) + " is not a regular file"));
    return file.string();
}

/// Waits for the transaction of another one; false when it has taken too long. SQLite's own pauses grow to
/// 100 ms, in which many a quicker process comes first.
int waitForOthers(void *, int attempts)
{
    using Clock = std::chrono::steady_clock;
    thread_local Clock::time_point begin;
    begin = attempts == 0 ? Clock::now() : begin;
    std::this_thread::sleep_for(BusyPollInterval);
    return Clock::now() - begin < BusyTimeout ? 1 : 0;
}

/// The path as SQLite's URI of a database that nobody changes.
std::string immutableUri(const std::string &file)
{
    std::string uri = "file:";
    for (const char letter : file) {
        const bool isReserved = letter == '%' || letter == '?' || letter == '#';
        uri += isReserved ? '%' + hexadecimal(std::string(1, letter)) : std::string(1, letter);
    }
    return uri + "?immutable=1";
}

/// Opens the database. Where SQLite may not put its own files beside it, nobody else may change it either; it
/// is then read without them, unless it is incomplete without its write-ahead log.
SQLite::Database opened(const std::string &file)
{
    try {
        SQLite::Database connection(
            file, SQLite::OPEN_READWRITE | SQLite::OPEN_NOFOLLOW | SQLite::OPEN_NOMUTEX);
        sqlite3_busy_handler(connection.getHandle(), waitForOthers, nullptr);
        const int status = connection.tryExec("SELECT count(*) FROM sqlite_master");
        const bool isRefusedFiles = (status & 0xFF) == SQLITE_CANTOPEN
            || sqlite3_extended_errcode(connection.getHandle()) == SQLITE_READONLY_DIRECTORY;
        std::error_code error;
        if (isRefusedFiles && !fs::exists(file + "-wal", error)) {
            return {immutableUri(file), SQLite::OPEN_READONLY | SQLite::OPEN_URI};
        }
        connection.exec("PRAGMA foreign_keys = ON");
        return connection;
    } catch (const SQLite::Exception &exception) {
        throw explained(exception, file, true);
    }
}

bool holdsOtherFiles(const std::string &directory)
{
    std::error_code error;
    const fs::directory_iterator entries(directory, error);
    return std::any_of(begin(entries), end(entries), [](const fs::directory_entry &entry) {
        const std::string name = entry.path().filename().string();
        return std::none_of(std::begin(Suffixes), std::end(Suffixes),
            [&name](const char *suffix) { return name == FileName + std::string(suffix); });
    });
}

/// Makes the directory, those above it, and in it an empty file unless one is there. Adds what was not there
/// to `made`, each before the directory that it is in.
void makeFile(const std::string &directory, std::vector<fs::path> *made)
{
    std::error_code error;
    for (fs::path path = directory; !path.empty() && !fs::exists(fs::symlink_status(path, error));
         path = path.parent_path()) {
        made->push_back(path);
    }
    fs::create_directories(directory, error);
    require(!error,
        "cannot make the directory " + directory + ": " + error.message() + "; name another with --bench");
    const std::string file = directory + '/' + FileName;
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (descriptor >= 0) {
        ::close(descriptor);
        made->insert(made->begin(), file);
    } else if (errno != EEXIST) {
        throw cannotWrite(file, std::generic_category().message(errno));
    }
}

int numberFrom(SQLite::Database &connection, const char *query)
{
    return connection.execAndGet(query).getInt();
}

/// False for an empty database; refused for that of another program.
bool isBench(SQLite::Database &connection, const std::string &directory)
{
    const bool isMarked = numberFrom(connection, "PRAGMA application_id") == ApplicationId;
    require(
        isMarked || numberFrom(connection, "SELECT count(*) FROM sqlite_master") == 0, otherFiles(directory));
    return isMarked;
}

} // namespace

BenchStore::BenchStore(const std::string &directory) : BenchStore(File{existingFile(directory)})
{
    const auto [version, application] = read([this] {
        return std::pair(
            numberFrom(connection, "PRAGMA user_version"), numberFrom(connection, "PRAGMA application_id"));
    });
    require(version != 0 && application == ApplicationId,
        noBench(directory, std::string(FileName) + " holds no bench"));
    require(version <= SchemaVersion,
        file + " has schema version " + std::to_string(version) + ", only versions up to "
            + std::to_string(SchemaVersion) + " are known; use a newer drive-bench");
    if (version < SchemaVersion) {
        change([this] { upgrade(); });
    }
    // What is in the write-ahead log is durable there. Moving it on each close would make every call of a
    // host tool wait for the disk.
    sqlite3_db_config(connection.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

BenchStore::BenchStore(const File &database) : file(database.path), connection(opened(database.path)) { }

void BenchStore::create(
    const std::string &directory, bool replace, const std::function<void(BenchStore &store)> &fill)
{
    require(!holdsOtherFiles(directory), otherFiles(directory));
    std::vector<fs::path> made;
    try {
        makeFile(directory, &made);
        BenchStore store(File{existingFile(directory)});
        const auto check = [&] {
            if (isBench(store.connection, directory)) {
                made.clear(); // another process was faster, and the bench is its
                require(replace, directory + " is a bench already; to make it anew, add --force");
            }
        };
        store.read(check); // before the database of another program is written to
        store.transact("PRAGMA journal_mode = WAL; BEGIN IMMEDIATE", [&] {
            check(); // another process may have made a bench meanwhile
            store.clear();
            store.upgrade();
            fill(store);
        });
    } catch (...) {
        std::error_code error;
        for (const fs::path &path : made) {
            fs::remove(path, error);
        }
        throw;
    }
}

/// Runs the work in a transaction; inside another one it is a part of that.
void BenchStore::run(const char *begin, const std::function<void()> &work) const
{
    if (sqlite3_get_autocommit(connection.getHandle()) == 0) {
        work();
        return;
    }
    try {
        connection.exec(begin);
        work();
        connection.exec("COMMIT");
    } catch (const SQLite::Exception &exception) {
        connection.tryExec("ROLLBACK");
        throw explained(exception, file, begin == BeginReading);
    } catch (...) {
        connection.tryExec("ROLLBACK");
        throw;
    }
}

void BenchStore::clear()
{
    std::vector<std::string> tables;
    SQLite::Statement query(connection, "SELECT name FROM sqlite_master WHERE type = 'table'");
    while (query.executeStep()) {
        tables.push_back(query.getColumn(0).getString());
    }
    query.reset();
    for (const std::string &table : tables) {
        connection.exec("DROP TABLE " + table);
    }
    connection.exec("PRAGMA user_version = 0");
}

void BenchStore::upgrade()
{
    for (int version = numberFrom(connection, "PRAGMA user_version"); version < SchemaVersion; ++version) {
        connection.exec(SchemaSteps[static_cast<std::size_t>(version)]);
    }
    connection.exec("PRAGMA user_version = " + std::to_string(SchemaVersion)
        + "; PRAGMA application_id = " + std::to_string(ApplicationId));
}

} // namespace bench
