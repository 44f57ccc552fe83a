// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/BenchDocument.h"
#include "bench/core/Creation.h"
#include "bench/core/Discovery.h"
#include "bench/core/Flash.h"
#include "bench/core/Host.h"
#include "bench/core/LifeCycle.h"

#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>
#include <string>

Q_DECLARE_METATYPE(std::string)

namespace QTest {

/// Shows both texts where they are not the same.
template <>
inline char *toString(const std::string &text)
{
    return toString(QByteArray::fromStdString(text));
}

} // namespace QTest

/// A bench in a temporary directory, with a directory of images for all models beside it.
class TemporaryBench
{
public:
    TemporaryBench();

    bench::Store &store() { return *opened; }
    /// The directory of the bench; the parent of it is this object's own.
    std::string directory() const { return temporary.path().toStdString() + "/bench"; }
    std::string file() const { return directory() + "/bench.sqlite"; }
    std::string imageDirectory() const { return temporary.path().toStdString() + "/images"; }
    std::string image(const std::string &model) const;

    /// Adds a drive with versions older than its image's, at a high flash rate.
    void addOutdated(const std::string &serial, const std::string &model = "Pebble",
        std::int64_t rate = bench::Drive::MaximumFlashRate);
    /// Sets a fault as a person writes it: "pulled-out 1000".
    void setFault(const std::string &serial, const std::string &text, bool once = false);
    void replug(const std::string &serial);

    bench::Drive drive(const std::string &serial) { return driveNamed(*opened, serial); }
    /// Changes the document of a drive past all rules.
    void edit(const std::string &serial, const std::function<void(bench::Drive &drive)> &work);

    std::vector<DeviceInfo> query() { return bench::query(*opened, imageDirectory()); }
    /// What discovery would report of the drive.
    DeviceInfo record(const std::string &serial);
    /// Flashes as another process does, with a connection of its own: by default a "Pebble" with its own
    /// image. Why that failed; empty when it succeeded.
    std::string flash(
        const std::string &serial, std::int32_t chipset = 1, const std::string &image = "pebble.tfw") const;

    /// The whole bench as JSON, to compare what it holds before and after.
    std::string content() { return bench::printed(bench::exportBench(*opened)); }
    /// Runs statements on the database, as another program does.
    void execute(const std::string &statements) const;

private:
    QTemporaryDir temporary;
    std::unique_ptr<bench::Store> opened;
};

/// A drive of that model with that serial number, up to date.
bench::Drive drive(const std::string &serial, const std::string &model = "Pebble");
/// A fault as a person writes it: "pulled-out 1000".
bench::Fault fault(const std::string &text, bool once = false);

/// Adds a row to the data of a test.
template <typename... Values>
void addRow(const char *name, Values... values)
{
    static_cast<void>((QTest::newRow(name) << ... << values));
}

/// What the work was refused with; empty when it was not refused.
std::string refusal(const std::function<void()> &work);
inline bool contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}
