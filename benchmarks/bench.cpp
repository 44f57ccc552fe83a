// What a large drive bench costs those who look at it.

#include "bench/core/Bench.h"
#include "benchmarks/Median.h"
#include "bench/core/Files.h"
#include "bench/core/SampleBench.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>

namespace {

constexpr int DriveCount = 1000;
constexpr int Turns = 21;

double medianMilliseconds(const std::function<void()> &work)
{
    std::vector<double> turns;
    turns.reserve(Turns);
    for (int turn = 0; turn < Turns; ++turn) {
        QElapsedTimer clock;
        clock.start();
        work();
        turns.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
    }
    return median(turns);
}

void runCommand(const QStringList &arguments, const QString &folder)
{
    QProcess command;
    command.start(DRIVE_BENCH, arguments + QStringList{"--bench", folder});
    if (!command.waitForFinished() || command.exitCode() != 0) {
        std::fprintf(stderr, "benchmark-bench: %s\n", command.readAllStandardError().constData());
    }
}

} // namespace

int main()
{
    const QTemporaryDir place;
    const QString folder = place.filePath("bench");
    QVector<bench::Drive> drives;
    for (int i = 0; i < DriveCount; ++i) {
        const QVector<bench::Drive> samples = bench::sampleDrives();
        bench::Drive drive = samples.at(i % samples.size());
        drive.serial = QString("TV%1").arg(i);
        drives.append(drive);
    }
    bench::Bench large(folder, bench::executableFolder());
    QString reason;
    if (!large.create(drives, false, &reason)) {
        std::fprintf(stderr, "benchmark-bench: %s\n", qPrintable(reason));
        return 1;
    }
    QStringList problems;
    const char *const row = "%-44s %7.1f ms %26s\n";
    std::printf(row, "a query of 1,000 drives", medianMilliseconds([&] { large.query(&problems); }), "50");
    std::printf(row, "drive-bench list, 1,000 drives",
        medianMilliseconds([&] { runCommand({"list"}, folder); }), "50");
    std::printf(row, "drive-bench list --json, 1,000 drives", medianMilliseconds([&] {
        runCommand({"list", "--json"}, folder);
    }),
        "");
    return 0;
}
