// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

#include <QCoreApplication>

#include <chrono>
#include <random>
#include <thread>

using namespace bench;

/// Processes that are killed while they change a bench, make one or flash a drive.
class tst_Kills : public QObject
{
    Q_OBJECT

private slots:
    void aKilledCommandHasDoneAllOrNothing_data();
    void aKilledCommandHasDoneAllOrNothing();
    void aKilledInitLeavesNoBenchOrAWholeOne();
    void aKilledFlashLeavesADriveThatCanBeFlashedAgain();
    void aKilledFlashIsToldFromOneThatGoesOn();
};

namespace {

constexpr int Kills = 12;
constexpr int KillsOfAFlash = 30;

/// The whole bench but the times of plugging.
QString contentOf(const QString &directory)
{
    return QString::fromStdString(printed(exportBench(Store(directory.toStdString()))))
        .remove(QRegularExpression("\"(un)?pluggedAt\": [0-9]+"));
}

/// Moments to kill a process at: from before it has done anything to after its end.
class Moments
{
public:
    /// Runs the program to its end once, to see how long it takes.
    Moments(QString program, const QStringList &arguments) : program(std::move(program))
    {
        QElapsedTimer clock;
        clock.start();
        if (QProcess::execute(this->program, arguments) != 0) {
            qFatal("the program fails");
        }
        moment = std::uniform_real_distribution<double>(0, 1.2 * double(clock.elapsed()) + 2);
    }

    /// Starts the program, kills it at such a moment, and waits for its end.
    void runAndKill(const QStringList &arguments)
    {
        QProcess process;
        process.start(program, arguments);
        QVERIFY(process.waitForStarted());
        std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(moment(random)));
        process.kill();
        QVERIFY(process.waitForFinished());
    }

private:
    QString program;
    std::uniform_real_distribution<double> moment;
    std::mt19937 random{20261121};
};

} // namespace

void tst_Kills::aKilledCommandHasDoneAllOrNothing_data()
{
    QTest::addColumn<int>("unused");
    for (const char *line :
        {"init --force", "add Skiff", "unplug A", "remove A", "fault A no-return", "companion install"}) {
        addRow(line, 0);
    }
}

void tst_Kills::aKilledCommandHasDoneAllOrNothing()
{
    const QStringList line = QString(QTest::currentDataTag()).split(' ');
    const QTemporaryDir parent;
    const QString origin = parent.filePath("origin");
    createBench(origin.toStdString(), false, [](Store &store) { addDrive(store, drive("A")); });
    const auto copyTo = [&](const QString &name) {
        const QString directory = parent.filePath(name);
        QDir().mkpath(directory);
        QFile::copy(origin + "/bench.sqlite", directory + "/bench.sqlite");
        return directory;
    };
    const QString done = copyTo("done");
    Moments moments(driveBenchPath(), line + QStringList{"--bench", done});
    const QString after = contentOf(done);
    const QString before = contentOf(copyTo("before"));
    QVERIFY(before != after);
    for (int i = 0; i < Kills; ++i) {
        const QString directory = copyTo(QString::number(i));
        moments.runAndKill(line + QStringList{"--bench", directory});
        const QString found = contentOf(directory);
        QVERIFY2(found == before || found == after, qPrintable(found));
    }
}

void tst_Kills::aKilledInitLeavesNoBenchOrAWholeOne()
{
    const QTemporaryDir parent;
    const auto arguments = [&parent](int i) {
        return QStringList{"init", "--bench", parent.filePath(QString::number(i))};
    };
    Moments moments(driveBenchPath(), arguments(Kills));
    const QString whole = contentOf(arguments(Kills).last());
    for (int i = 0; i < Kills; ++i) {
        const QString directory = arguments(i).last();
        moments.runAndKill(arguments(i));
        QVERIFY(!QFile::exists(directory + "/bench.sqlite") || contentOf(directory) == whole);
        QCOMPARE(driveBench("init --force", directory.toStdString()).status, 0);
        QCOMPARE(contentOf(directory), whole);
        QVERIFY(!QFile::exists(directory + "/bench.sqlite.new"));
    }
}

void tst_Kills::aKilledFlashLeavesADriveThatCanBeFlashedAgain()
{
    TemporaryBench bench;
    const std::int64_t length = readImage(bench.image("Pebble")).length;
    for (int i = 0; i <= KillsOfAFlash; ++i) {
        bench.addOutdated(std::to_string(i), "Pebble", length * 10); // its image takes 100 ms
    }
    const auto arguments = [&](int i) {
        return QStringList{"flash", QString::fromStdString(bench.directory()), QString::number(i),
            QString::fromStdString(bench.image("Pebble"))};
    };
    Moments moments(QCoreApplication::applicationFilePath(), arguments(KillsOfAFlash));
    int interrupted = 0;
    for (int i = 0; i < KillsOfAFlash; ++i) {
        moments.runAndKill(arguments(i));
        const std::string serial = std::to_string(i);
        const Drive drive = bench.drive(serial);
        if (drive.incomplete) {
            ++interrupted;
            QCOMPARE(bench.record(serial).firmwareStatus, Status::Unknown);
        } else {
            QCOMPARE(drive.lastUpdate, std::string(drive.flashFirmware == "0.9" ? "" : "succeeded"));
            QCOMPARE(drive.flashConfiguration, std::string(drive.flashFirmware == "0.9" ? "1" : "5"));
        }
    }
    QVERIFY(interrupted > 0);
    for (int i = 0; i < KillsOfAFlash; ++i) {
        const std::string serial = std::to_string(i);
        QTRY_VERIFY(bench.drive(serial).state() != DriveState::Writing);
        QCOMPARE(contains(bench.drive(serial).lastUpdateText(), "interrupted, at "),
            bench.drive(serial).incomplete);
        QCOMPARE(bench.flash(serial), std::string());
        bench.replug(serial);
        QCOMPARE(bench.drive(serial).runningFirmware, std::string("2.14"));
    }
}

void tst_Kills::aKilledFlashIsToldFromOneThatGoesOn()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 5000); // its image takes 8 seconds
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
    QTRY_COMPARE(bench.drive("A").state(), DriveState::BootRom);
    QVERIFY(bench.drive("A").isInterrupted() && bench.drive("A").lastUpdate.empty());
}

// Its arguments are the directory of the bench, the serial number and the path of the image.
static const TestProcess flashProcess("flash", [](int, char **argv) {
    Store store(argv[1]);
    return refusal([&] { Flash(store).run(argv[2], 1, argv[3]); }).empty() ? 0 : 1;
});

static const TestClass<tst_Kills> killsTests;
#include "tst_Kills.moc"
