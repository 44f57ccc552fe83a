#include "bench/core/DriveTable.h"

#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <sqlite3.h>

#include <algorithm>
#include <unordered_map>

namespace bench {

namespace {

/// Collects the names of the columns, each with something before and behind it.
struct ColumnList
{
    const char *before;
    const char *behind;
    std::string columns = {};

    void add(const char *name)
    {
        columns += (columns.empty() ? "" : ", ") + (before + std::string(name)) + behind;
    }
    template <typename Number>
    void number(const char *name, Number, Number, Number)
    {
        add(name);
    }
    void flag(const char *name, bool) { add(name); }
    void bytes(const char *name, const std::string &) { add(name); }
    void text(const char *name, const std::string &) { add(name); }
};

std::string columnList(const char *before = "", const char *behind = "")
{
    const Drive drive;
    ColumnList list{before, behind};
    visitFields(drive, list);
    return list.columns;
}

/// Binds the fields to parameters of their names.
struct Binder
{
    SQLite::Statement &statement;

    template <typename Number>
    void number(const char *name, Number value, Number, Number)
    {
        statement.bind(':' + std::string(name), static_cast<std::int64_t>(value));
    }
    void flag(const char *name, bool value) { statement.bind(':' + std::string(name), value ? 1 : 0); }
    void bytes(const char *name, const std::string &value)
    {
        statement.bind(':' + std::string(name), value.data(), static_cast<int>(value.size()));
    }
    void text(const char *name, const std::string &value) { statement.bind(':' + std::string(name), value); }
};

/// Reads the fields from the columns of a row, one after the other.
struct Reader
{
    const SQLite::Statement &row;
    int column;

    template <typename Number>
    void number(const char *name, Number &value, Number minimum, Number maximum)
    {
        const std::int64_t stored = row.getColumn(column++).getInt64();
        if (stored < minimum || stored > maximum) {
            throw Refused(std::string("invalid drive: ") + name + " must be a whole number from "
                + std::to_string(minimum) + " to " + std::to_string(maximum));
        }
        value = static_cast<Number>(stored);
    }
    void flag(const char *, bool &value) { value = row.getColumn(column++).getInt() != 0; }
    void bytes(const char *, std::string &value) { value = row.getColumn(column++).getString(); }
    void text(const char *, std::string &value) { value = row.getColumn(column++).getString(); }
};

Fault faultFrom(const SQLite::Statement &row, int column)
{
    const std::string name = row.getColumn(column).getString();
    const FaultDescription *const kind = findFault(name);
    if (kind == nullptr) {
        throw Refused("there is no fault \"" + escaped(name) + '"');
    }
    Fault fault{kind->kind};
    fault.field = findRecordField(row.getColumn(column + 1).getString());
    fault.number = row.getColumn(column + 2).getInt64();
    fault.text = row.getColumn(column + 3).getString();
    fault.once = row.getColumn(column + 4).getInt() != 0;
    return fault;
}

/// Binds the bytes, unless the statement has no such parameter.
void bindBytes(SQLite::Statement &statement, int index, const std::string &bytes)
{
    if (index <= statement.getBindParameterCount()) {
        statement.bind(index, bytes.data(), static_cast<int>(bytes.size()));
    }
}

/// Runs what reads a row of the drive. A row that was edited to something that no drive can be makes the
/// bench unreadable rather than wrong.
template <typename Work>
void readRow(const Drive &drive, Work work)
{
    try {
        work();
    } catch (const Refused &refused) {
        throw Refused("the bench holds an invalid drive " + escaped(drive.serial) + ": " + refused.what()
            + "; take it off with: drive-bench remove " + shellQuoted(escaped(drive.serial)));
    }
}

} // namespace

std::vector<Drive> DriveTable::all() const
{
    return select("true", {});
}

std::optional<Drive> DriveTable::find(const std::string &serial) const
{
    const std::vector<Drive> found = select("serial = ?", serial);
    return found.empty() ? std::nullopt : std::optional<Drive>(found.front());
}

Drive DriveTable::get(const std::string &serial) const
{
    const std::optional<Drive> found = find(serial);
    if (!found) {
        throw Refused(
            "there is no drive with that serial number on the bench; drive-bench list shows those that are");
    }
    return *found;
}

std::optional<Drive> DriveTable::findReported(const std::string &reportedSerial) const
{
    const std::vector<Drive> found = select("reportedSerial = ?", reportedSerial);
    const auto attached =
        std::find_if(found.begin(), found.end(), [](const Drive &drive) { return drive.isAttached(); });
    if (attached != found.end()) {
        return *attached;
    }
    return found.empty() ? std::nullopt : std::optional<Drive>(found.front());
}

std::vector<Drive> DriveTable::select(const std::string &condition, const std::string &parameter) const
{
    std::vector<Drive> drives;
    std::unordered_map<std::int64_t, std::size_t> places;
    SQLite::Statement rows(
        database, "SELECT id, " + columnList() + " FROM drives WHERE " + condition + " ORDER BY serial");
    bindBytes(rows, 1, parameter);
    while (rows.executeStep()) {
        Drive drive;
        drive.id = rows.getColumn(0).getInt64();
        Reader reader{rows, 1};
        readRow(drive, [&] { visitFields(drive, reader); });
        places.emplace(drive.id, drives.size());
        drives.push_back(drive);
    }
    SQLite::Statement faults(database,
        "SELECT drive, kind, field, number, text, once FROM faults WHERE drive IN (SELECT id FROM drives "
        "WHERE "
            + condition + ") ORDER BY drive, position");
    bindBytes(faults, 1, parameter);
    while (faults.executeStep()) {
        Drive &drive = drives[places.at(faults.getColumn(0).getInt64())];
        readRow(drive, [&] { drive.faults.push_back(faultFrom(faults, 1)); });
    }
    for (const Drive &drive : drives) {
        readRow(drive, [&] { check(drive); });
    }
    return drives;
}

void DriveTable::insert(const Drive &drive, const FlashChip &chip)
{
    SQLite::Statement row(
        database, "INSERT INTO drives (" + columnList() + ") VALUES (" + columnList(":") + ")");
    Binder binder{row};
    visitFields(drive, binder);
    row.exec();
    Drive added = drive;
    added.id = database.getLastInsertRowid();
    insertFaults(added);
    replaceChip(added, chip);
}

void DriveTable::update(const Drive &drive)
{
    SQLite::Statement row(
        database, "UPDATE drives SET (" + columnList() + ") = (" + columnList(":") + ") WHERE id = :id");
    Binder binder{row};
    visitFields(drive, binder);
    row.bind(":id", drive.id);
    row.exec();
    SQLite::Statement former(database, "DELETE FROM faults WHERE drive = ?");
    former.bind(1, drive.id);
    former.exec();
    insertFaults(drive);
}

void DriveTable::insertFaults(const Drive &drive)
{
    SQLite::Statement row(database, "INSERT INTO faults VALUES (?, ?, ?, ?, ?, ?, ?)");
    int position = 0;
    for (const Fault &fault : drive.faults) {
        row.bind(1, drive.id);
        row.bind(2, position++);
        row.bind(3, describe(fault.kind).name);
        row.bind(4, fault.field == nullptr ? "" : fault.field->name);
        row.bind(5, fault.number);
        bindBytes(row, 6, fault.text);
        row.bind(7, fault.once ? 1 : 0);
        row.exec();
        row.reset();
    }
}

bool DriveTable::remove(const std::string &serial)
{
    SQLite::Statement row(database, "DELETE FROM drives WHERE serial = ?");
    bindBytes(row, 1, serial);
    return row.exec() == 1;
}

FlashChip DriveTable::chip(const Drive &drive) const
{
    SQLite::Statement row(database, "SELECT content FROM chips WHERE drive = ?");
    row.bind(1, drive.id);
    return FlashChip(row.executeStep() ? row.getColumn(0).getString() : std::string());
}

void DriveTable::replaceChip(const Drive &drive, const FlashChip &chip)
{
    SQLite::Statement row(database, "INSERT OR REPLACE INTO chips VALUES (?, ?)");
    row.bind(1, drive.id);
    bindBytes(row, 2, chip.content());
    row.exec();
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
