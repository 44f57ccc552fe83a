#include "bench/core/BenchDocument.h"
#include "bench/core/Companion.h"
#include "bench/core/SampleBench.h"
#include "tests/bench/Flashing.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

#include <SQLiteCpp/Database.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

#include <chrono>
#include <random>
#include <thread>

using namespace bench;

/// Processes that are killed while they change a bench or flash a drive.
class tst_Kills : public QObject
{
    Q_OBJECT

private slots:
    void aKilledCommandHasDoneAllOrNothing_data();
    void aKilledCommandHasDoneAllOrNothing();
    void aKilledFlashLeavesADriveThatCanBeFlashedAgain();
    void aKilledFlashIsToldFromOneThatGoesOn();
};

namespace {

constexpr int KillsOfACommand = 10;
constexpr int KillsOfAFlash = 50;

std::string integrity(BenchStore &store)
{
    std::string result;
    store.read([&] { result = store.database().execAndGet("PRAGMA integrity_check").getString(); });
    return result;
}

/// The whole bench but the times of plugging.
QString contentButTimes(BenchStore &store)
{
    return QString::fromStdString(exportBench(store))
        .remove(QRegularExpression("\"(un)?pluggedAt\": [0-9]+"));
}

/// Starts the program, kills it so many milliseconds later, and waits for its end.
void runAndKill(const QString &program, const QStringList &arguments, double milliseconds)
{
    QProcess process;
    process.start(program, arguments);
    QVERIFY(process.waitForStarted());
    std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(milliseconds));
    process.kill();
    QVERIFY(process.waitForFinished());
}

} // namespace

void tst_Kills::aKilledCommandHasDoneAllOrNothing_data()
{
    QTest::addColumn<QString>("line");
    for (const char *line : {"init --force", "add Skiff", "unplug A", "plug B", "remove A",
             "fault A pulled-out 100", "companion install", "companion uninstall"}) {
        QTest::newRow(line) << line;
    }
}

void tst_Kills::aKilledCommandHasDoneAllOrNothing()
{
    QFETCH(QString, line);
    // Listed as one of the companion's, and there for every one of the benches.
    QProcess process;
    process.start("sh", {"-c", "trap '' TERM; exec sleep 300"});
    QVERIFY(process.waitForStarted());
    QTemporaryDir parent;
    const QString origin = parent.filePath("origin");
    BenchStore::create(origin.toStdString(), false, [&](BenchStore &store) {
        for (const char *serial : {"A", "B"}) {
            Drive drive = newDrive(models().front());
            drive.serial = serial;
            drive.plugged = drive.serial == "A";
            DriveLifeCycle(store).add(drive);
        }
        if (line == "companion uninstall") {
            Companion(store, {}).install();
            Host(store).addProcess({process.processId(), "/Applications/Tarvo Quaydesk.app"});
            store.database().exec("UPDATE processes SET heartbeat = heartbeat + 600000");
        }
    });
    const auto copyTo = [&](const QString &name) {
        const QString directory = parent.filePath(name);
        return QDir(directory).mkpath(".")
                && QFile::copy(origin + "/bench.sqlite", directory + "/bench.sqlite")
            ? directory
            : QString();
    };
    const QString done = copyTo("done");
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(driveBench(line, done.toStdString()).status, 0);
    // From kills that come before anything is done to kills that come too late.
    std::uniform_real_distribution<double> moment(0, double(clock.elapsed()) + 5);
    BenchStore doneStore(done.toStdString());
    const QString after = contentButTimes(doneStore);
    BenchStore originStore(copyTo("before").toStdString());
    const QString before = contentButTimes(originStore);
    QVERIFY(before != after);
    std::mt19937 random(20261121);
    int changed = 0;
    for (int i = 0; i < KillsOfACommand; ++i) {
        const QString directory = copyTo(QString::number(i));
        runAndKill(driveBenchPath(), line.split(' ') + QStringList{"--bench", directory}, moment(random));
        BenchStore store(directory.toStdString());
        QCOMPARE(integrity(store), std::string("ok"));
        const QString found = contentButTimes(store);
        QVERIFY2(found == before || found == after, qPrintable(found));
        changed += found == after;
    }
    qInfo("done %d times of %d", changed, KillsOfACommand);
    process.kill();
    QVERIFY(process.waitForFinished());
}

void tst_Kills::aKilledFlashLeavesADriveThatCanBeFlashedAgain()
{
    TemporaryBench bench;
    for (int i = 0; i <= KillsOfAFlash; ++i) {
        bench.addOutdated("DRIVE" + std::to_string(i), "Pebble", 35000); // its image takes 100 ms
    }
    FlashChip before;
    before.load(FirmwareImage::forModel(*findModel("Pebble"), "0.9", "1"));
    FlashChip after;
    after.load(FirmwareImage::read(bench.image("Pebble")));
    const auto arguments = [&](const std::string &serial) {
        return QStringList{"flash", QString::fromStdString(bench.directory()), QString::fromStdString(serial),
            QString::fromStdString(bench.image("Pebble"))};
    };
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(QProcess::execute(
                 QCoreApplication::applicationFilePath(), arguments("DRIVE" + std::to_string(KillsOfAFlash))),
        0);
    // From kills that come before anything is written to kills that come too late.
    std::uniform_real_distribution<double> moment(0, 1.5 * double(clock.elapsed()));
    std::mt19937 random(20261121);
    int incomplete = 0;
    for (int i = 0; i < KillsOfAFlash; ++i) {
        const std::string serial = "DRIVE" + std::to_string(i);
        const std::vector<Drive> others = bench.lifeCycle().drives();
        runAndKill(QCoreApplication::applicationFilePath(), arguments(serial), moment(random));
        QCOMPARE(integrity(bench.store()), std::string("ok"));
        const Drive drive = bench.drive(serial);
        const std::string content = chip(bench, serial).content();
        if (drive.incomplete) {
            ++incomplete;
            QVERIFY(drive.state() == DriveState::Writing || drive.state() == DriveState::BootRom);
            QCOMPARE(record(bench, serial).firmwareStatus, 3);
            QCOMPARE(record(bench, serial).configurationStatus, 3);
        } else if (drive.flashFirmware == "0.9") {
            QVERIFY(content == before.content());
        } else {
            QCOMPARE(drive.lastUpdate, std::string("succeeded"));
            QVERIFY(content == after.content());
        }
    }
    qInfo("incomplete %d times of %d", incomplete, KillsOfAFlash);
    QVERIFY(incomplete > 0);
    for (const Drive &drive : bench.lifeCycle().drives()) {
        QTRY_VERIFY(bench.drive(drive.serial).state() != DriveState::Writing);
        QCOMPARE(flash(bench, drive.serial), std::string());
        replug(bench, drive.serial);
        QCOMPARE(bench.drive(drive.serial).runningFirmware, std::string(findModel("Pebble")->newestFirmware));
        QVERIFY(chip(bench, drive.serial).content() == after.content());
    }
}

void tst_Kills::aKilledFlashIsToldFromOneThatGoesOn()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 500); // its image takes 7 seconds
    bench.addOutdated("B", "Pebble");
    const Drive other = bench.drive("B");
    QProcess writer;
    writer.start(QCoreApplication::applicationFilePath(),
        {"flash", QString::fromStdString(bench.directory()), "A",
            QString::fromStdString(bench.image("Pebble"))});
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 1500) {
        QCOMPARE(bench.drive("A").state(), DriveState::Writing);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    writer.kill();
    QVERIFY(writer.waitForFinished());
    clock.restart();
    QTRY_VERIFY(clock.elapsed() > 1000);
    QCOMPARE(bench.drive("A").state(), DriveState::BootRom);
    QCOMPARE(bench.drive("A").lastUpdate, std::string());
    QVERIFY(bench.drive("A").bytesWritten < 3500);
    QCOMPARE(bench.drive("B").powerUps, other.powerUps);
    QCOMPARE(bench.drive("B").flashFirmware, other.flashFirmware);
}

// Its arguments are the directory of the bench, the serial number and the path of the image.
static const TestProcess flashProcess("flash", [](int, char **argv) {
    BenchStore store(argv[1]);
    return refusal([&] { Flash(store).run(argv[2], 1, argv[3]); }).empty() ? 0 : 1;
});

static const TestClass<tst_Kills> killsTests;
#include "tst_Kills.moc"
