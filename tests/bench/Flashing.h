#pragma once

#include "bench/core/Flash.h"
#include "tests/bench/TemporaryBench.h"

#include <QRegularExpression>
#include <QString>

/// Flashes a drive as another process does, with a connection of its own: by default a "Pebble" that goes by
/// "A" with its own image. Why that failed; empty when it succeeded.
inline std::string flash(const TemporaryBench &bench, const std::string &serial = "A",
    std::int32_t chipset = 1, const std::string &image = "pebble.tfw")
{
    bench::BenchStore store(bench.directory());
    return refusal([&] { bench::Flash(store).run(serial, chipset, bench.imageDirectory() + '/' + image); });
}

/// What discovery would report of the drive.
inline DeviceInfo record(TemporaryBench &bench, const std::string &serial = "A")
{
    return bench.discovery().records({bench.drive(serial)}).front();
}

inline void replug(TemporaryBench &bench, const std::string &serial = "A")
{
    bench.lifeCycle().unplug(serial);
    bench.lifeCycle().plug(serial);
}

inline bench::FlashChip chip(TemporaryBench &bench, const std::string &serial = "A")
{
    return bench::DriveTable(bench.store()).chip(bench.drive(serial));
}

/// Writes the drive as it is.
inline void update(TemporaryBench &bench, const bench::Drive &drive)
{
    bench.store().change([&] { bench::DriveTable(bench.store()).update(drive); });
}

/// The whole bench but how the last updates ended.
inline QString contentButUpdates(TemporaryBench &bench)
{
    return QString::fromStdString(bench.content()).remove(QRegularExpression("\"lastUpdate(At)?\": .*"));
}
