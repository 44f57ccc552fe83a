#pragma once

#include "bench/core/BenchStore.h"
#include "bench/core/Drive.h"
#include "bench/core/FlashChip.h"

#include <optional>
#include <string>
#include <vector>

namespace bench {

/// The drives of a bench and their flash chips, row by row. To be called inside a transaction of the store,
/// which outlives this; throws Refused and the exceptions of the database.
class DriveTable
{
public:
    explicit DriveTable(const BenchStore &store) : database(store.database()) { }

    /// All drives, plugged in or not, by serial number.
    std::vector<Drive> all() const;
    std::optional<Drive> find(const std::string &serial) const;
    /// The drive with that serial number; refused when there is none.
    Drive get(const std::string &serial) const;
    /// The drive that goes by that serial number; of several the first, and one that is attached before
    /// others.
    std::optional<Drive> findReported(const std::string &reportedSerial) const;

    /// Adds a drive with its chip.
    void insert(const Drive &drive, const FlashChip &chip);
    /// Writes everything but the chip.
    void update(const Drive &drive);
    /// Takes the drive and its chip away; refused when there is none.
    void remove(const std::string &serial);

    /// A drive whose chip was taken from the database has a blank one.
    FlashChip chip(const Drive &drive) const;
    void replaceChip(const Drive &drive, const FlashChip &chip);
    /// Writes these bytes of the chip, from `position` on, and no others.
    void writeChip(const Drive &drive, std::size_t position, const std::string &bytes);

private:
    template <typename... Values>
    std::vector<Drive> select(const std::string &which, const Values &...values) const;
    void insertFaults(const Drive &drive);

    SQLite::Database &database;
};

} // namespace bench
