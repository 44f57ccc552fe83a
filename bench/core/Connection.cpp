// SPDX-License-Identifier: MIT
#include "bench/core/Connection.h"

#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <new>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr std::chrono::seconds BusyTimeout(5);
constexpr std::chrono::milliseconds BusyPollInterval(2);
/// Bytes of a value. A damaged database may say that one is larger, for which memory would be taken.
constexpr int MaximumLength = 64 * 1024 * 1024;

/// Throws what the failure of a call to the database means for a person.
[[noreturn]] void explain(const SQLite::Exception &exception, const std::string &file, bool isReading)
{
    const std::string reason = exception.what();
    switch (exception.getErrorCode() & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        throw Refused(file + " was in use by another process for 5 seconds; try again");
    case SQLITE_NOMEM:
        throw std::bad_alloc();
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
    case SQLITE_ERROR: // a table or a column is not as it was
    case SQLITE_CONSTRAINT:
    case SQLITE_TOOBIG:
        throw Damaged(file, reason);
    default:
        break;
    }
    if (isReading) {
        throw Refused("cannot read " + file + ": " + reason
            + "; it must be readable, and its directory writable while a write-ahead log is there");
    }
    throw Refused("cannot write " + file + ": " + reason + "; the directory must be writable and have room");
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

/// The path as SQLite's URI, with its options.
std::string uri(const std::string &file, const std::string &options)
{
    std::string path;
    for (const char letter : file) {
        path += letter == '%' ? "%25"
            : letter == '?'   ? "%3F"
            : letter == '#'   ? "%23"
                              : std::string(1, letter);
    }
    return "file:" + path + '?' + options;
}

/// Opens the database. Who may only read it leaves no file beside it, which its owner could not write:
/// SQLite's own files are read where they are. Without them nobody writes at the moment, unless one was taken
/// away.
SQLite::Database opened(const std::string &file)
{
    const bool isWritable = ::faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0;
    std::error_code error;
    try {
        if (!isWritable && !std::filesystem::exists(file + "-wal", error)) {
            // SQLite would make an empty log, which is then not the owner's.
            return {uri(file, "immutable=1"), SQLite::OPEN_READONLY | SQLite::OPEN_URI};
        }
        SQLite::Database connection = isWritable
            ? SQLite::Database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_NOFOLLOW | SQLite::OPEN_NOMUTEX)
            : SQLite::Database(
                uri(file, "readonly_shm=1"), SQLite::OPEN_READONLY | SQLite::OPEN_URI | SQLite::OPEN_NOMUTEX);
        sqlite3_busy_handler(connection.getHandle(), waitForOthers, nullptr);
        sqlite3_limit(connection.getHandle(), SQLITE_LIMIT_LENGTH, MaximumLength);
        const int status = connection.tryExec("SELECT count(*) FROM sqlite_master");
        const bool isRefusedFiles = (status & 0xFF) == SQLITE_CANTOPEN
            || sqlite3_extended_errcode(connection.getHandle()) == SQLITE_READONLY_DIRECTORY;
        if (isRefusedFiles && !std::filesystem::exists(file + "-wal", error)) {
            return {uri(file, "immutable=1"), SQLite::OPEN_READONLY | SQLite::OPEN_URI};
        }
        connection.exec("PRAGMA synchronous = FULL");
        // What is in the write-ahead log is durable there. Moving it on each close would make every call of a
        // host tool wait for the disk, and could take away the log of a bench that has replaced this one.
        sqlite3_db_config(connection.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        return connection;
    } catch (const SQLite::Exception &exception) {
        explain(exception, file, true);
    }
}

} // namespace

Damaged::Damaged(const std::string &file, const std::string &reason)
    : Refused(file + " is damaged: " + reason + "; make a new bench with: drive-bench init --force")
{
}

Connection::Connection(const std::string &file) : path(file), connection(opened(file)) { }

/// Runs the work in a transaction; inside another one it is a part of that.
void Connection::run(bool isReading, const std::function<void()> &work) const
{
    if (sqlite3_get_autocommit(connection.getHandle()) == 0) {
        work();
        return;
    }
    try {
        connection.exec(isReading ? "BEGIN" : "BEGIN IMMEDIATE");
        work();
        if (!isReading) {
            // A damage that no reader meets, of the space that is free, would spoil what is written there.
            if (connection.execAndGet("PRAGMA quick_check(1)").getString() != "ok") {
                throw Damaged(path, "its pages do not fit together");
            }
        }
        connection.exec("COMMIT");
    } catch (const SQLite::Exception &exception) {
        connection.tryExec("ROLLBACK");
        explain(exception, path, isReading);
    } catch (...) {
        connection.tryExec("ROLLBACK");
        throw;
    }
    int isMoved = 0;
    sqlite3_file_control(connection.getHandle(), "main", SQLITE_FCNTL_HAS_MOVED, &isMoved);
    require(isReading || isMoved == 0, path + " was taken away or replaced meanwhile; try again");
}

void Connection::keepLog()
{
    try {
        connection.exec("PRAGMA journal_mode = WAL");
    } catch (const SQLite::Exception &exception) {
        explain(exception, path, false);
    }
}

} // namespace bench
