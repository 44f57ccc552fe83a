// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <QCoreApplication>

#include <memory>
#include <vector>

using namespace bench;

/// Several processes on one bench, some of which are killed.
class tst_ManyProcesses : public QObject
{
    Q_OBJECT

private slots:
    void loseNoChange();
    void surviveKills();
};

namespace {

constexpr int ProcessCount = 8;

using Processes = std::vector<std::unique_ptr<QProcess>>;

void addDrives(TemporaryBench &bench)
{
    bench.addOutdated("COMMON");
    for (int i = 0; i < ProcessCount; ++i) {
        bench.addOutdated("OWN" + std::to_string(i));
    }
}

Processes startAll(const TemporaryBench &bench, int milliseconds)
{
    Processes processes;
    for (int i = 0; i < ProcessCount; ++i) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(QCoreApplication::applicationFilePath(),
            {"change", QString::fromStdString(bench.directory()), QString::number(i),
                QString::number(milliseconds)});
    }
    return processes;
}

void countUp(Store &store, const std::string &serial)
{
    store.change([&] {
        Drive drive = driveNamed(store, serial);
        ++drive.flashes;
        store.update(drive);
    });
}

} // namespace

void tst_ManyProcesses::loseNoChange()
{
    TemporaryBench bench;
    addDrives(bench);
    const Processes processes = startAll(bench, 3000);
    std::int64_t total = 0;
    for (int i = 0; i < ProcessCount; ++i) {
        QProcess &process = *processes[std::size_t(i)];
        QVERIFY(process.waitForFinished());
        const QByteArray output = process.readAllStandardOutput();
        QVERIFY2(process.exitCode() == 0 && output.toInt() > 0, output.constData());
        QCOMPARE(bench.drive("OWN" + std::to_string(i)).flashes, std::int64_t(output.toInt()));
        total += output.toInt();
    }
    QCOMPARE(bench.drive("COMMON").flashes, total);
    const std::string calls = readFile(bench.directory() + "/calls.log", 1 << 24);
    QCOMPARE(std::int64_t(std::count(calls.begin(), calls.end(), '\n')), total);
    QVERIFY(!contains(calls, "\n\n"));
}

void tst_ManyProcesses::surviveKills()
{
    TemporaryBench bench;
    addDrives(bench);
    for (int round = 1; round <= 5; ++round) {
        const std::int64_t before = bench.drive("COMMON").flashes;
        const Processes processes = startAll(bench, 30000);
        QTRY_VERIFY(bench.drive("COMMON").flashes > before + 5 * round);
        for (const auto &process : processes) {
            process->kill();
        }
        for (const auto &process : processes) {
            process->waitForFinished();
        }
        QCOMPARE(int(allDrives(Store(bench.directory())).size()), ProcessCount + 1);
        // Each process was killed within one round of its changes at most.
        std::int64_t own = 0;
        for (int i = 0; i < ProcessCount; ++i) {
            own += bench.drive("OWN" + std::to_string(i)).flashes;
        }
        const std::int64_t common = bench.drive("COMMON").flashes;
        QVERIFY2(
            common >= own && common <= own + ProcessCount * round, qPrintable(QString::number(common - own)));
        bench.replug("COMMON");
    }
}

// Its arguments are the directory of the bench, the number of the process and how long it counts up a common
// number, its own number, and calls. Prints how often it has done that.
static const TestProcess changeProcess("change", [](int, char **argv) {
    std::printf("%s", refusal([argv] {
        Store store(argv[1]);
        QElapsedTimer clock;
        clock.start();
        int changes = 0;
        for (; clock.elapsed() < std::stoi(argv[3]); ++changes) {
            countUp(store, "COMMON");
            countUp(store, "OWN" + std::string(argv[2]));
            logCall(argv[1], {argv[2]});
        }
        std::printf("%d", changes);
    }).c_str());
    return 0;
});

static const TestClass<tst_ManyProcesses> manyProcessesTests;
#include "tst_ManyProcesses.moc"
