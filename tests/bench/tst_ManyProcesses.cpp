#include "bench/core/DriveTable.h"
#include "bench/core/Refused.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <SQLiteCpp/Database.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

#include <memory>
#include <vector>

using namespace bench;

/// Several processes on one bench, some of which are killed.
///
/// TARVO_BENCH_SECONDS sets how long they change it: 3 without it.
class tst_ManyProcesses : public QObject
{
    Q_OBJECT

private slots:
    void loseNoChange();
    void surviveKills();
};

namespace {

constexpr int ProcessCount = 8;

int secondsToRun()
{
    const int set = qEnvironmentVariableIntValue("TARVO_BENCH_SECONDS");
    return set > 0 ? set : 3;
}

void countUp(BenchStore &store, const std::string &serial)
{
    store.change([&] {
        DriveTable table(store);
        Drive drive = table.get(serial);
        ++drive.bytesWritten;
        table.update(drive);
    });
}

/// One of the processes: counts up a common number, its own number and the host's, logs a call, and reads.
/// How often it has done all that.
std::int64_t changeForAWhile(const std::string &directory, int number, int seconds)
{
    BenchStore store(directory);
    QElapsedTimer clock;
    clock.start();
    std::int64_t changes = 0;
    while (clock.elapsed() < seconds * 1000) {
        countUp(store, "COMMON");
        countUp(store, "OWN" + std::to_string(number));
        Host(store).change([](HostState &host) {
            host.extensionVersion = std::to_string(std::stoll(host.extensionVersion) + 1);
        });
        Host(store).logCall({std::to_string(number)});
        if (DriveLifeCycle(store).drives().size() != ProcessCount + 1) {
            throw Refused("a drive is missing");
        }
        ++changes;
    }
    return changes;
}

std::vector<std::unique_ptr<QProcess>> startAll(const TemporaryBench &bench, int seconds)
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < ProcessCount; ++i) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(QCoreApplication::applicationFilePath(),
            {"change", QString::fromStdString(bench.directory()), QString::number(i),
                QString::number(seconds)});
    }
    return processes;
}

void addDrives(TemporaryBench *bench)
{
    bench->addOutdated("COMMON", "Pebble");
    for (int i = 0; i < ProcessCount; ++i) {
        bench->addOutdated("OWN" + std::to_string(i), "Harbour");
    }
    bench->host().change([](HostState &host) { host.extensionVersion = "0"; });
}

std::string integrity(TemporaryBench &bench)
{
    return bench.store().database().execAndGet("PRAGMA integrity_check").getString();
}

} // namespace

void tst_ManyProcesses::loseNoChange()
{
    TemporaryBench bench;
    addDrives(&bench);
    const auto processes = startAll(bench, secondsToRun());
    std::int64_t total = 0;
    for (int i = 0; i < ProcessCount; ++i) {
        QProcess &process = *processes[static_cast<std::size_t>(i)];
        QVERIFY(process.waitForFinished((secondsToRun() + 30) * 1000));
        const QByteArray output = process.readAllStandardOutput();
        QVERIFY2(process.exitCode() == 0, output.constData());
        const std::int64_t changes = output.toLongLong();
        QVERIFY(changes > 0);
        QCOMPARE(bench.drive("OWN" + std::to_string(i)).bytesWritten, changes);
        const std::vector<std::string> calls = bench.host().calls();
        QCOMPARE(std::int64_t(std::count(calls.begin(), calls.end(), std::to_string(i))), changes);
        total += changes;
    }
    qInfo("%lld changes", 4 * static_cast<long long>(total));
    QCOMPARE(bench.drive("COMMON").bytesWritten, total);
    QCOMPARE(bench.host().state().extensionVersion, std::to_string(total));
    QCOMPARE(integrity(bench), std::string("ok"));
}

void tst_ManyProcesses::surviveKills()
{
    TemporaryBench bench;
    addDrives(&bench);
    for (int round = 0; round < 5; ++round) {
        const auto processes = startAll(bench, 30);
        QTRY_VERIFY(!bench.host().calls().empty());
        QTest::qWait(20 * round);
        for (const auto &process : processes) {
            process->kill();
        }
        for (const auto &process : processes) {
            process->waitForFinished();
        }
        QCOMPARE(integrity(bench), std::string("ok"));
        QCOMPARE(bench.lifeCycle().drives().size(), std::size_t(ProcessCount + 1));
        // Each process was killed within one round of its changes at most.
        std::int64_t own = 0;
        for (int i = 0; i < ProcessCount; ++i) {
            own += bench.drive("OWN" + std::to_string(i)).bytesWritten;
        }
        const std::int64_t common = bench.drive("COMMON").bytesWritten;
        QVERIFY2(common >= own && common <= own + ProcessCount * (round + 1),
            qPrintable(QString::number(common - own)));
        bench.lifeCycle().unplug("COMMON");
        bench.lifeCycle().plug("COMMON");
    }
}

// Its arguments are the directory of the bench, the number of the process and the seconds.
static const TestProcess changeProcess("change", [](int, char **argv) {
    try {
        const std::int64_t changes = changeForAWhile(argv[1], std::stoi(argv[2]), std::stoi(argv[3]));
        std::printf("%lld", static_cast<long long>(changes));
        return 0;
    } catch (const Refused &refused) {
        std::printf("%s\n", refused.what());
        return 1;
    }
});

static const TestClass<tst_ManyProcesses> manyProcessesTests;
#include "tst_ManyProcesses.moc"
