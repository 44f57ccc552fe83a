// SPDX-License-Identifier: MIT
#include "bench/core/Store.h"

#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <SQLiteCpp/Statement.h>
#include <zlib.h>

#include <filesystem>
#include <system_error>
#include <utility>

namespace bench {

namespace {

namespace fs = std::filesystem;

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

Refused invalidDrive(const std::string &file, const std::string &name, const std::string &reason)
{
    const std::string serial = escaped(name);
    return Refused(file + " holds the drive " + serial + ", which cannot be read: " + reason
        + "; take it off with: drive-bench remove " + shellQuoted(serial));
}

int numberFrom(SQLite::Database &database, const char *query)
{
    return database.execAndGet(query).getInt();
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

Store::Store(const std::string &directory) : Store(directory, fileIn(directory))
{
    requireThisVersion();
}

Store::Store(std::string directory, const std::string &file) : place(std::move(directory)), connection(file)
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
    return read(
        [this] { return numberFrom(connection.database(), "PRAGMA application_id") == ApplicationId; });
}

void Store::requireThisVersion() const
{
    require(isBench(), noBench(place, std::string(FileName) + " holds no bench"));
    const int version = read([this] { return numberFrom(connection.database(), "PRAGMA user_version"); });
    require(version == SchemaVersion,
        connection.file() + " is a bench of version " + std::to_string(version) + ", only "
            + std::to_string(SchemaVersion) + " is known; make a new one with: drive-bench init --force");
}

/// Makes a bench of a database, whatever it holds, with what `fill` puts there.
void Store::replaceAll(const std::function<void(Store &store)> &fill)
{
    change([&] {
        std::vector<std::string> tables;
        SQLite::Statement query(connection.database(), "SELECT name FROM sqlite_master WHERE type = 'table'");
        while (query.executeStep()) {
            tables.push_back(query.getColumn(0).getString());
        }
        query.reset();
        for (const std::string &table : tables) {
            connection.database().exec("DROP TABLE \"" + table + '"');
        }
        connection.database().exec(Schema);
        insertDocument(HostName, HostState());
        fill(*this);
    });
    connection.keepLog();
}

/// The document of a row of name, document and checksum. Refused when it is not what was written.
Store::Row Store::checkedRow(const SQLite::Statement &row) const
{
    Row found{row.getColumn(0).getString(), row.getColumn(1).getString()};
    if (checksumOf(found.name, found.document) != row.getColumn(2).getInt64()) {
        if (found.name == HostName) {
            throw Damaged(connection.file(), "the state of the host is not what was written");
        }
        throw invalidDrive(connection.file(), found.name, "it is damaged");
    }
    return found;
}

/// All documents by name. Refused when one of them is not what was written, or one is missing.
std::vector<Store::Row> Store::rows() const
{
    std::vector<Row> found;
    std::int64_t total = 0;
    SQLite::Statement row(
        connection.database(), "SELECT name, document, checksum FROM documents ORDER BY name");
    while (row.executeStep()) {
        found.push_back(checkedRow(row));
        total += sealOf(row.getColumn(2).getInt64());
    }
    if (found.empty() || total != connection.database().execAndGet("SELECT total FROM seal").getInt64()) {
        throw Damaged(connection.file(), "a document is missing");
    }
    return found;
}

Drive Store::parsed(const Row &row) const
{
    try {
        Drive drive = driveFromJson(Json::parse(row.document, nullptr, false));
        require(drive.serial == row.name, "it says that it is another");
        return drive;
    } catch (const Refused &refused) {
        throw invalidDrive(connection.file(), row.name, refused.what());
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
    // Not all rows are read for it: each call of the stand-in for ls would.
    SQLite::Statement row(
        connection.database(), "SELECT name, document, checksum FROM documents WHERE name = x'' LIMIT 1");
    if (!row.executeStep()) {
        throw Damaged(connection.file(), "a document is missing");
    }
    return Json::parse(checkedRow(row).document);
}

void Store::setHost(const HostState &host)
{
    rows();
    updateDocument(HostName, host);
}

void Store::insertDocument(const std::string &name, const Json &document)
{
    SQLite::Statement statement(connection.database(), "INSERT INTO documents VALUES (?, ?, ?)");
    const std::string text = document.dump(-1, ' ', false, Json::error_handler_t::replace);
    bind(statement, 1, name);
    bind(statement, 2, text);
    statement.bind(3, checksumOf(name, text));
    statement.exec();
    connection.database().exec(
        "UPDATE seal SET total = total + " + std::to_string(sealOf(checksumOf(name, text))));
}

void Store::updateDocument(const std::string &name, const Json &document)
{
    remove(name);
    insertDocument(name, document);
}

bool Store::remove(const std::string &name)
{
    // Only what this row has added is taken off the seal: another one that is missing must stay noticed.
    SQLite::Statement unseal(connection.database(),
        "UPDATE seal SET total = total - "
        "(SELECT coalesce(sum(checksum + 4294967296), 0) FROM documents WHERE name = ?)");
    bind(unseal, 1, name);
    unseal.exec();
    SQLite::Statement statement(connection.database(), "DELETE FROM documents WHERE name = ?");
    bind(statement, 1, name);
    return statement.exec() > 0;
}

} // namespace bench
