#pragma once

#include "bench/core/BenchStore.h"
#include "bench/core/Companion.h"
#include "bench/core/Discovery.h"
#include "bench/core/Drive.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/FlashChip.h"
#include "bench/core/Host.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <string>

/// A bench in a temporary directory, with a directory of small images for all models beside it.
class TemporaryBench
{
public:
    TemporaryBench();

    bench::BenchStore &store() { return *opened; }
    bench::DriveLifeCycle lifeCycle() { return bench::DriveLifeCycle(*opened); }
    bench::Discovery discovery() { return {*opened, imageDirectory()}; }
    /// Queries the drives; the first record.
    DeviceInfo firstOfQuery() { return discovery().query().at(0); }
    bench::Host host() { return bench::Host(*opened); }
    bench::Companion companion() { return bench::Companion(*opened, directory()); }

    /// The directory of the bench; the parent of it is this object's own.
    std::string directory() const { return temporary.path().toStdString() + "/bench"; }
    std::string imageDirectory() const { return temporary.path().toStdString() + "/images"; }
    /// The image file of a model, whether it is there or not.
    std::string image(const std::string &model) const;

    /// Adds a drive with versions older than its image's, at a high flash rate.
    void addOutdated(const std::string &serial, const std::string &model,
        std::int64_t rate = bench::Drive::MaximumFlashRate);

    /// The drive as it is stored.
    bench::Drive drive(const std::string &serial) { return lifeCycle().drive(serial); }

    /// What is in the drive's flash chip.
    bench::FlashChip chip(const std::string &serial);

    /// Runs statements on the database.
    void execute(const std::string &statements) { opened->database().exec(statements); }

    /// The whole bench as JSON, to compare what it holds before and after.
    std::string content();

private:
    QTemporaryDir temporary;
    std::unique_ptr<bench::BenchStore> opened;
};

/// What the work was refused with; empty when it was not refused.
std::string refusal(const std::function<void()> &work);

/// A fault with a number or with a text.
bench::Fault numberFault(bench::FaultKind kind, std::int64_t number = 0, bool once = false);
bench::Fault textFault(
    bench::FaultKind kind, const std::string &text, const char *field = "", bool once = false);
