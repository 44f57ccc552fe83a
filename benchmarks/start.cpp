// SPDX-License-Identifier: MIT
#include "benchmarks/Median.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

constexpr int Rounds = 21;

struct Cost
{
    double milliseconds;
    double mebibytes;
};

Cost start(const QString &program)
{
    QProcess process;
    const auto before = std::chrono::steady_clock::now().time_since_epoch();
    process.start(program, QStringList());
    process.waitForFinished();
    const QByteArrayList figures = process.readAllStandardOutput().trimmed().split(' ');
    if (figures.size() != 2) {
        qFatal("%s did not show a window", qPrintable(program));
    }
    const double microseconds =
        figures[0].toDouble() - double(std::chrono::duration_cast<std::chrono::microseconds>(before).count());
    return {microseconds / 1000, figures[1].toDouble() / 1024};
}

} // namespace

/// From the start of the process to the first visible window, with an empty bench, beside a bare window.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir bench;
    qputenv("TARVO_BENCH", bench.path().toLocal8Bit());
    const QString folder = QCoreApplication::applicationDirPath();

    std::vector<double> programTime;
    std::vector<double> bareTime;
    std::vector<double> programMemory;
    std::vector<double> bareMemory;
    for (int round = 0; round < Rounds; ++round) {
        const Cost bare = start(folder + "/start-bare");
        const Cost program = start(folder + "/start-program");
        bareTime.push_back(bare.milliseconds);
        bareMemory.push_back(bare.mebibytes);
        programTime.push_back(program.milliseconds);
        programMemory.push_back(program.mebibytes);
    }
    std::printf("%-44s %10s %10s %7s %6s\n", "", "program", "floor", "ratio", "aim");
    std::printf("%-44s %7.1f ms %7.1f ms %7.2f %6s\n", "start to the first visible window",
        median(programTime), median(bareTime), median(programTime) / median(bareTime), "1.12");
    std::printf("%-44s %6.1f MiB %6.1f MiB %6.2f %6s\n", "resident memory then", median(programMemory),
        median(bareMemory), median(programMemory) / median(bareMemory), "1.10");
    return 0;
}
