#include "bench/core/Store.h"

#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <sqlite3.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include <unistd.h>

namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds BusyTimeout(5);
constexpr std::chrono::milliseconds BusyPollInterval(2);
constexpr const char *FileName = "bench.sqlite";
/// Marks a database as that of a bench ("TVRB").
constexpr int ApplicationId = 0x54565242;
constexpr int SchemaVersion = 3;
/// A row is a document with its name and a checksum of both; the seal is a checksum of all rows.
constexpr const char *Schema = R"(
CREATE TABLE documents (name BLOB NOT NULL, document BLOB NOT NULL, checksum INTEGER NOT NULL) STRICT;
CREATE TABLE seal (total INTEGER NOT NULL) STRICT;
INSERT INTO seal VALUES (0);
PRAGMA user_version = 3;
PRAGMA application_id = 0x54565242;
)";

std::string noBench(const std::string &directory, const std::string &reason)
{
    return directory + " is no bench that can be read: " + reason
        + "; make one with: drive-bench init --bench " + shellQuoted(directory);
}

Refused cannotWrite(const std::string &file, const std::string &reason)
{
    return Refused("cannot write " + file + ": " + reason + "; the directory must be writable and have room");
}

std::string inUse(const std::string &file)
{
    return file + " was in use by another process for 5 seconds; try again";
}

Refused invalidDrive(const std::string &file, const std::string &name, const std::string &reason)
{
    const std::string serial = escaped(name);
    return Refused(file + " holds the drive " + serial + ", which cannot be read: " + reason
        + "; take it off with: drive-bench remove " + shellQuoted(serial));
}

/// Throws what the failure of a call to the database means for a person.
[[noreturn]] void explain(const SQLite::Exception &exception, const std::string &file, bool isReading)
{
    const std::string reason = exception.what();
    switch (exception.getErrorCode() & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        throw Refused(inUse(file));
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
    throw cannotWrite(file, reason);
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
    const bool isWritable = ::access(file.c_str(), W_OK) == 0;
    try {
        SQLite::Database connection = isWritable
            ? SQLite::Database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_NOFOLLOW | SQLite::OPEN_NOMUTEX)
            : SQLite::Database(
                uri(file, "readonly_shm=1"), SQLite::OPEN_READONLY | SQLite::OPEN_URI | SQLite::OPEN_NOMUTEX);
        sqlite3_busy_handler(connection.getHandle(), waitForOthers, nullptr);
        sqlite3_limit(
            connection.getHandle(), SQLITE_LIMIT_LENGTH, 64 * 1024 * 1024); // a damaged size asks for more
        const int status = connection.tryExec("SELECT count(*) FROM sqlite_master");
        const bool isRefusedFiles = (status & 0xFF) == SQLITE_CANTOPEN
            || sqlite3_extended_errcode(connection.getHandle()) == SQLITE_READONLY_DIRECTORY;
        std::error_code error;
        if (isRefusedFiles && !fs::exists(file + "-wal", error)) {
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

int numberFrom(SQLite::Database &connection, const char *query)
{
    return connection.execAndGet(query).getInt();
}

std::int64_t checksumOf(const std::string &name, const std::string &document)
{
    const auto add = [](uLong sum, const std::string &bytes) {
        return ::crc32(sum, reinterpret_cast<const Bytef *>(bytes.data()), static_cast<uInt>(bytes.size()));
    };
    return static_cast<std::int64_t>(add(add(0, name + '\n'), document));
}

/// What a row adds to the seal.
std::int64_t sealOf(std::int64_t checksum)
{
    return checksum + 4294967296;
}

void bind(SQLite::Statement &statement, int index, const std::string &bytes)
{
    statement.bind(index, bytes.data(), static_cast<int>(bytes.size()));
}

} // namespace

Damaged::Damaged(const std::string &file, const std::string &reason)
    : Refused(file + " is damaged: " + reason + "; make a new bench with: drive-bench init --force")
{
}

Store::Store(const std::string &directory) : Store(directory, fileIn(directory))
{
    requireThisVersion();
}

Store::Store(std::string directory, std::string file)
    : place(std::move(directory)), file(std::move(file)), connection(opened(this->file))
{
}

/// The path of the database in that directory, which is there and no link.
std::string Store::fileIn(const std::string &directory)
{
    std::error_code error;
    const fs::path file = fs::canonical(directory, error) / FileName;
    const fs::file_status status = fs::symlink_status(file, error);
    require(!fs::is_symlink(status), file.string() + " is a symbolic link, which is not followed; remove it");
    require(fs::exists(status), noBench(directory, error.message()));
    require(
        fs::is_regular_file(status), noBench(directory, std::string(FileName) + " is not a regular file"));
    return file.string();
}

/// False for the database of another program.
bool Store::isBench() const
{
    return read([this] { return numberFrom(connection, "PRAGMA application_id") == ApplicationId; });
}

void Store::requireThisVersion() const
{
    require(isBench(), noBench(place, std::string(FileName) + " holds no bench"));
    const int version = read([this] { return numberFrom(connection, "PRAGMA user_version"); });
    require(version == SchemaVersion,
        file + " is a bench of version " + std::to_string(version) + ", only " + std::to_string(SchemaVersion)
            + " is known; make a new one with: drive-bench init --force");
}

/// Runs the work in a transaction; inside another one it is a part of that.
void Store::run(bool isReading, const std::function<void()> &work) const
{
    if (sqlite3_get_autocommit(connection.getHandle()) == 0) {
        work();
        return;
    }
    try {
        connection.exec(isReading ? "BEGIN" : "BEGIN IMMEDIATE");
        work();
        connection.exec("COMMIT");
    } catch (const SQLite::Exception &exception) {
        connection.tryExec("ROLLBACK");
        explain(exception, file, isReading);
    } catch (...) {
        connection.tryExec("ROLLBACK");
        throw;
    }
    int isMoved = 0;
    sqlite3_file_control(connection.getHandle(), "main", SQLITE_FCNTL_HAS_MOVED, &isMoved);
    require(isReading || isMoved == 0, file + " was taken away or replaced meanwhile; try again");
}

/// Makes a bench of a database, whatever it holds, with what `fill` puts there.
void Store::replaceAll(const std::function<void(Store &store)> &fill)
{
    change([&] {
        std::vector<std::string> tables;
        SQLite::Statement query(connection, "SELECT name FROM sqlite_master WHERE type = 'table'");
        while (query.executeStep()) {
            tables.push_back(query.getColumn(0).getString());
        }
        query.reset();
        for (const std::string &table : tables) {
            connection.exec("DROP TABLE \"" + table + '"');
        }
        connection.exec(Schema);
        insertDocument(HostName, HostState());
        fill(*this);
    });
    try {
        connection.exec("PRAGMA journal_mode = WAL");
    } catch (const SQLite::Exception &exception) {
        explain(exception, file, false);
    }
}

/// All documents by name. Refused when one of them is not what was written, or one is missing.
std::vector<Store::Row> Store::rows() const
{
    std::vector<Row> found;
    std::int64_t total = 0;
    SQLite::Statement row(connection, "SELECT name, document, checksum FROM documents ORDER BY name");
    while (row.executeStep()) {
        found.push_back({row.getColumn(0).getString(), row.getColumn(1).getString()});
        const std::int64_t checksum = checksumOf(found.back().name, found.back().document);
        if (checksum != row.getColumn(2).getInt64()) {
            throw invalidDrive(file, found.back().name, "it is damaged");
        }
        total += sealOf(checksum);
    }
    if (found.empty() || total != connection.execAndGet("SELECT total FROM seal").getInt64()) {
        throw Damaged(file, "a drive is missing");
    }
    return found;
}

Drive Store::parsed(const Row &row) const
{
    try {
        const Drive drive = driveFromJson(Json::parse(row.document, nullptr, false));
        require(drive.serial == row.name, "it says that it is another");
        return drive;
    } catch (const Refused &refused) {
        throw invalidDrive(file, row.name, refused.what());
    }
}

std::vector<Drive> Store::drives() const
{
    std::vector<Drive> found;
    for (const Row &row : rows()) {
        if (row.name != HostName) {
            found.push_back(parsed(row));
        }
    }
    return found;
}

std::optional<Drive> Store::find(const std::string &serial) const
{
    for (const Row &row : rows()) {
        if (row.name == serial) {
            return parsed(row);
        }
    }
    return std::nullopt;
}

HostState Store::host() const
{
    return Json::parse(rows().front().document);
}

void Store::insertDocument(const std::string &name, const Json &document)
{
    SQLite::Statement statement(connection, "INSERT INTO documents VALUES (?, ?, ?)");
    const std::string text = document.dump(-1, ' ', false, Json::error_handler_t::replace);
    bind(statement, 1, name);
    bind(statement, 2, text);
    statement.bind(3, checksumOf(name, text));
    statement.exec();
    connection.exec("UPDATE seal SET total = total + " + std::to_string(sealOf(checksumOf(name, text))));
}

void Store::updateDocument(const std::string &name, const Json &document)
{
    remove(name);
    insertDocument(name, document);
}

bool Store::remove(const std::string &name)
{
    SQLite::Statement statement(connection, "DELETE FROM documents WHERE name = ?");
    bind(statement, 1, name);
    const bool isRemoved = statement.exec() > 0;
    connection.exec(
        "UPDATE seal SET total = (SELECT coalesce(sum(checksum + 4294967296), 0) FROM documents)");
    return isRemoved;
}

} // namespace bench
