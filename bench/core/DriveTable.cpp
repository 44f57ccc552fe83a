#include "bench/core/DriveTable.h"

#include "bench/core/Refused.h"
#include "bench/core/Rows.h"
#include "bench/core/ShellQuoting.h"
#include "bench/core/Text.h"

#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

namespace bench {

namespace {

constexpr const char *NoSuchDrive =
    "there is no drive with that serial number on the bench; drive-bench list shows those that are";

/// The fault in the columns from `column` on.
Fault faultFrom(const SQLite::Statement &row, int column)
{
    const std::string name = row.getColumn(column).getString();
    const FaultDescription *const kind = findFault(name);
    require(kind != nullptr, "there is no fault \"" + escaped(name) + '"');
    Fault fault{kind->kind};
    fault.field = findRecordField(row.getColumn(column + 1).getString());
    fault.number = row.getColumn(column + 2).getInt64();
    fault.text = row.getColumn(column + 3).getString();
    fault.once = row.getColumn(column + 4).getInt() != 0;
    return fault;
}

/// Runs what reads the drive. A row that was edited to something that no drive can be makes the bench
/// unreadable rather than wrong.
template <typename Work>
void readDrive(const Drive &drive, Work work)
{
    try {
        work();
    } catch (const Refused &refused) {
        throw Refused("the bench holds an invalid drive " + escaped(drive.serial) + ": " + refused.what()
            + "; take it off with: drive-bench remove " + shellQuoted(escaped(drive.serial)));
    }
}

std::optional<Drive> first(const std::vector<Drive> &drives)
{
    return drives.empty() ? std::nullopt : std::optional<Drive>(drives.front());
}

} // namespace

std::vector<Drive> DriveTable::all() const
{
    return select("ORDER BY serial, position");
}

std::optional<Drive> DriveTable::find(const std::string &serial) const
{
    return first(select("WHERE serial = ? ORDER BY position", Blob{serial}));
}

Drive DriveTable::get(const std::string &serial) const
{
    const std::optional<Drive> found = find(serial);
    require(found.has_value(), NoSuchDrive);
    return *found;
}

std::optional<Drive> DriveTable::findReported(const std::string &reportedSerial) const
{
    return first(select("WHERE reportedSerial = ? ORDER BY plugged AND answers DESC, serial, position",
        Blob{reportedSerial}));
}

template <typename... Values>
std::vector<Drive> DriveTable::select(const std::string &which, const Values &...values) const
{
    // One row for each fault, and one for a drive without any.
    SQLite::Statement rows = prepared(database,
        "SELECT " + rowNames(driveFields())
            + ", id, kind, field, number, text, once FROM drives LEFT JOIN faults ON drive = id " + which,
        values...);
    const int idColumn = static_cast<int>(driveFields().size());
    std::vector<Drive> drives;
    while (rows.executeStep()) {
        const std::int64_t id = rows.getColumn(idColumn).getInt64();
        if (drives.empty() || drives.back().id != id) {
            drives.emplace_back().id = id;
            readFields(rows, driveFields(), &drives.back());
        }
        if (!rows.getColumn(idColumn + 1).isNull()) {
            readDrive(drives.back(), [&] { drives.back().faults.push_back(faultFrom(rows, idColumn + 1)); });
        }
    }
    for (const Drive &drive : drives) {
        readDrive(drive, [&] { check(drive); });
    }
    return drives;
}

void DriveTable::insert(const Drive &drive, const FlashChip &chip)
{
    SQLite::Statement row(database,
        "INSERT INTO drives (" + rowNames(driveFields()) + ") VALUES (" + rowNames(driveFields(), ":") + ')');
    bindFields(row, driveFields(), drive);
    row.exec();
    Drive added = drive;
    added.id = database.getLastInsertRowid();
    insertFaults(added);
    replaceChip(added, chip);
}

void DriveTable::update(const Drive &drive)
{
    SQLite::Statement row(database,
        "UPDATE drives SET (" + rowNames(driveFields()) + ") = (" + rowNames(driveFields(), ":")
            + ") WHERE id = :id");
    bindFields(row, driveFields(), drive);
    row.bind(":id", drive.id);
    row.exec();
    execute(database, "DELETE FROM faults WHERE drive = ?", drive.id);
    insertFaults(drive);
}

void DriveTable::insertFaults(const Drive &drive)
{
    int position = 0;
    for (const Fault &fault : drive.faults) {
        execute(database, "INSERT INTO faults VALUES (?, ?, ?, ?, ?, ?, ?)", drive.id, position++,
            describe(fault.kind).name, fault.field == nullptr ? "" : fault.field->name, fault.number,
            Blob{fault.text}, fault.once);
    }
}

void DriveTable::remove(const std::string &serial)
{
    const int removed = execute(database, "DELETE FROM drives WHERE serial = ?", Blob{serial});
    require(removed == 1, NoSuchDrive);
}

FlashChip DriveTable::chip(const Drive &drive) const
{
    SQLite::Statement row = prepared(database, "SELECT content FROM chips WHERE drive = ?", drive.id);
    return FlashChip(row.executeStep() ? row.getColumn(0).getString() : std::string());
}

void DriveTable::replaceChip(const Drive &drive, const FlashChip &chip)
{
    execute(database, "INSERT OR REPLACE INTO chips VALUES (?, ?)", drive.id, Blob{chip.content()});
}

void DriveTable::writeChip(const Drive &drive, std::size_t position, const std::string &bytes)
{
    sqlite3 *const handle = database.getHandle();
    sqlite3_blob *blob = nullptr;
    int status = sqlite3_blob_open(handle, "main", "chips", "content", drive.id, 1, &blob);
    if (status == SQLITE_OK) {
        status = sqlite3_blob_write(
            blob, bytes.data(), static_cast<int>(bytes.size()), static_cast<int>(position));
    }
    sqlite3_blob_close(blob);
    if (status != SQLITE_OK) {
        throw SQLite::Exception(handle, status);
    }
}

} // namespace bench
