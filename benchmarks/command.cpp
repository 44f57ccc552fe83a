// SPDX-License-Identifier: MIT
// What "tarvo-firmware list" takes with six drives, beside a program that only asks the library for them.

#include "benchmarks/Median.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr int Rounds = 51;

/// Of a program that finds nothing to list the exit status says so too, so it is not looked at.
double milliseconds(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QElapsedTimer clock;
    clock.start();
    process.start(program, arguments);
    process.waitForFinished();
    const double elapsed = double(clock.nsecsElapsed()) / 1e6;
    if (process.error() == QProcess::FailedToStart) {
        qFatal("%s does not start", qPrintable(program));
    }
    return elapsed;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir bench;
    qputenv("TARVO_BENCH", bench.path().toLocal8Bit() + "/bench");
    const QString folder = QCoreApplication::applicationDirPath();
    milliseconds(folder + "/drive-bench", {"init"});

    std::vector<double> command;
    std::vector<double> floor;
    for (int round = 0; round < Rounds; ++round) {
        floor.push_back(milliseconds(folder + "/ask-once", {}));
        command.push_back(milliseconds(folder + "/tarvo-firmware", {"list"}));
    }
    std::printf("%-44s %10s %10s %7s %6s\n", "", "command", "floor", "ratio", "aim");
    std::printf("%-44s %7.1f ms %7.1f ms %7.2f %6s\n", "tarvo-firmware list, six drives", median(command),
        median(floor), median(command) / median(floor), "1.15");
    const QString other = QStandardPaths::findExecutable("fwupdtool");
    if (!other.isEmpty()) {
        std::printf("%-44s %7.1f ms\n", "fwupdtool get-devices", milliseconds(other, {"get-devices"}));
    }
    return 0;
}
