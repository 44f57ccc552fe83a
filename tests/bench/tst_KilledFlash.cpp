#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"

#include <QCoreApplication>
#include <QProcess>
#include <QtTest>

#include <chrono>
#include <memory>
#include <thread>

using namespace bench;

/// A process that is killed while it writes a drive, or a bench.
class tst_KilledFlash : public QObject
{
    Q_OBJECT

private slots:
    void leavesADriveThatCanBeFlashedAgain_data();
    void leavesADriveThatCanBeFlashedAgain();
    void leavesTheOldBenchOrTheNewOne();
};

void tst_KilledFlash::leavesADriveThatCanBeFlashedAgain_data()
{
    QTest::addColumn<int>("percent");
    for (int percent = 5; percent < 85; percent += 8) {
        QTest::newRow(qPrintable(QString("at %1 %").arg(percent))) << percent;
    }
}

void tst_KilledFlash::leavesADriveThatCanBeFlashedAgain()
{
    QFETCH(int, percent);
    std::unique_ptr<TemporaryBench> kept;
    QMap<QString, QByteArray> before;
    // On a busy machine the kill may come too late; then once more, at half the rate.
    for (int rate = 5000; kept == nullptr; rate /= 2) {
        auto attempt = std::make_unique<TemporaryBench>();
        attempt->addOutdated("A", "Pebble", rate);
        attempt->addOutdated("B", "Skiff");
        before = attempt->content();
        QProcess writer;
        writer.start(
            QCoreApplication::applicationFilePath(), {"flash", attempt->folder(), attempt->image("Pebble")});
        QTRY_VERIFY(attempt->drive("A").bytesToWrite > 0);
        while (writer.state() == QProcess::Running
            && 100 * attempt->drive("A").bytesWritten < percent * attempt->drive("A").bytesToWrite) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        writer.kill();
        QVERIFY(writer.waitForFinished());
        if (writer.exitStatus() == QProcess::CrashExit) {
            kept = std::move(attempt);
        }
    }
    TemporaryBench &bench = *kept;

    // Listed, with everything unknown, and nothing else on the bench has changed.
    QStringList problems;
    const QVector<DriveRecord> records = bench->query(&problems);
    QCOMPARE(problems, QStringList());
    QCOMPARE(int(records.size()), 2);
    QCOMPARE(records.first().serialNumber, QString("A"));
    QCOMPARE(records.first().firmwareStatus, 3);
    QCOMPARE(records.first().configurationStatus, 3);
    QCOMPARE(bench->state(bench.drive("A")), DriveState::BootRom);
    auto after = bench.content();
    for (const char *name : {"/drives/A.json", "/drives/A.flash"}) {
        after.insert(name, before.value(name));
    }
    QCOMPARE(after, before);

    QString reason;
    QVERIFY2(bench->changeDrive(
                 "A",
                 [](Drive *drive, QString *) {
                     drive->flashRate = 1000000;
                     return true;
                 },
                 &reason),
        qPrintable(reason));
    QVERIFY2(bench->flash("A", 1, bench.image("Pebble"), &reason), qPrintable(reason));
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench.drive("A").runningFirmware, findModel("Pebble")->newestFirmware);
    QCOMPARE(bench->record(bench.drive("A")).firmwareStatus, 2);
}

void tst_KilledFlash::leavesTheOldBenchOrTheNewOne()
{
    TemporaryBench bench;
    int replaced = 0;
    int kept = 0;
    // From kills that come before anything is done to kills that come too late.
    for (int microseconds = 0; microseconds < 40000; microseconds += 800) {
        QString reason;
        QVERIFY2(bench->create({}, true, &reason), qPrintable(reason));
        bench.addOutdated("A", "Pebble");
        QProcess writer;
        writer.start(driveBenchPath(), {"init", "--force", "--bench", bench.folder()});
        QVERIFY(writer.waitForStarted());
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
        writer.kill();
        QVERIFY(writer.waitForFinished());

        QStringList problems;
        const auto drives = bench->drives(&problems).size();
        QCOMPARE(problems, QStringList());
        QVERIFY2(drives == 1 || drives == 6, qPrintable(QString::number(drives)));
        QCOMPARE(int(bench->query(&problems).size()), int(drives));
        ++(drives == 1 ? kept : replaced);
    }
    qInfo("the old bench %d times, the new one %d times", kept, replaced);
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == "flash") {
        QString reason;
        return Bench(arguments.value(2), QString()).flash("A", 1, arguments.value(3), &reason) ? 0 : 1;
    }
    tst_KilledFlash test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_KilledFlash.moc"
