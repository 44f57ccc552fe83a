#include "bench/core/CallLog.h"
#include "bench/core/Companion.h"
#include "bench/core/FlashChip.h"
#include "bench/core/SampleBench.h"
#include "tests/bench/TemporaryBench.h"

#include <QElapsedTimer>
#include <QtTest>

#include <chrono>
#include <thread>

using namespace bench;

/// Plugging, restarting, discovery and its faults, and the bench folder itself.
class tst_Bench : public QObject
{
    Q_OBJECT

private slots:
    void theSampleHoldsOneOfEach();
    void aBenchIsMadeOnceUnlessForced();
    void aFolderWithOtherFilesIsRefused();
    void aFolderOfDrivesWithOtherFilesIsRefused();
    void aRefusedBenchLeavesNothing();
    void aDriveThatCouldNotBeReadAgainIsRefused();
    void neverSettlingForOnceEndsWithTheRestart();
    void aMissingFolderIsReportedAndEmpty();
    void readingLeavesNoTraceInAnotherFolder();
    void pluggingAndUnplugging();
    void anUnpluggedDriveIsNotDiscovered();
    void anUnknownDriveIsRefused();
    void addingRefuses_data();
    void addingRefuses();
    void removingTakesBothFiles();
    void aDriveRunsWhatWasInFlashAtPowerUp();
    void aBlankChipBootsFromRom();
    void statusesFollowTheImageFolder();
    void queriesTakeTimeWithASlowProbe();
    void statusesSettleAfterQueries();
    void statusesSettleAfterTime();
    void statusesNeverSettle();
    void recordFaults_data();
    void recordFaults();
    void aFaultForOnceIsUsedUpByOneQuery();
    void lookingAtADriveUsesNothingUp();
    void aDriveDoesNotComeBack();
    void aDriveComesBackWithAnotherSerialNumber();
    void aDriveIsListedTwice();
    void settingAFaultAgainReplacesIt();
    void clearingFaults();
    void unmounting();
    void changesShowInTheMark();
    void aChangeThatIsRefusedChangesNothing();
    void companionIsInstalledAndRemoved();
};

void tst_Bench::theSampleHoldsOneOfEach()
{
    TemporaryBench bench;
    QString reason;
    QVERIFY2(bench->create(sampleDrives(), true, &reason), qPrintable(reason));
    QStringList problems;
    QStringList seen;
    for (const DriveRecord &record : bench->query(&problems)) {
        seen += QString("%1 %2 %3 %4")
                    .arg(record.auxiliaryText1)
                    .arg(record.chipsetType)
                    .arg(record.firmwareStatus)
                    .arg(record.configurationStatus);
    }
    QCOMPARE(problems, QStringList());
    QCOMPARE(seen,
        QStringList({"USB 1 1 1", "USB 3 1 2", "USB 2 2 1", "FireWire 6 1 1", "USB 1 2 2", "USB 0 3 3"}));
}

void tst_Bench::aBenchIsMadeOnceUnlessForced()
{
    TemporaryBench bench;
    bench.addOutdated("OLD", "Pebble");
    QString reason;
    QVERIFY(Companion(bench.folder()).install(&reason));
    const auto before = bench.content();
    QVERIFY(!bench->create(sampleDrives(), false, &reason));
    QVERIFY2(reason.contains("--force"), qPrintable(reason));
    QCOMPARE(bench.content(), before);

    QVERIFY2(bench->create(sampleDrives(), true, &reason), qPrintable(reason));
    QStringList problems;
    QCOMPARE(int(bench->drives(&problems).size()), 6);
    QVERIFY(!bench.content().contains("/drives/OLD.flash"));
    QVERIFY(!bench->host(&problems).companionInstalled);
}

void tst_Bench::aFolderWithOtherFilesIsRefused()
{
    QTemporaryDir folder;
    QString reason;
    QVERIFY(replaceFile(folder.filePath("letter.txt"), "dear", &reason));
    QVERIFY(!Bench(folder.path(), QString()).create({}, true, &reason));
    QVERIFY2(reason.contains("holds other files"), qPrintable(reason));
    QCOMPARE(
        QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("letter.txt"));
}

void tst_Bench::aFolderOfDrivesWithOtherFilesIsRefused()
{
    QTemporaryDir folder;
    QString reason;
    QVERIFY(QDir(folder.path()).mkdir("drives"));
    QVERIFY(replaceFile(folder.filePath("drives/thesis.odt"), "mine", &reason));
    QVERIFY(!Bench(folder.path(), QString()).create(sampleDrives(), true, &reason));
    QVERIFY2(reason.contains("holds other files"), qPrintable(reason));
    QCOMPARE(QDir(folder.filePath("drives")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
        QStringList("thesis.odt"));
}

void tst_Bench::aDriveThatCouldNotBeReadAgainIsRefused()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    const QString text(120000, 'B');
    QVERIFY(bench->setFault("A", textFault("text", text, "modelName"), &reason));
    QVERIFY(bench->setFault("A", textFault("text", text, "serialNumber"), &reason));
    const auto before = bench.content();
    QVERIFY(!bench->setFault("A", textFault("text", text, "auxiliaryText1"), &reason));
    QVERIFY2(reason.contains("too large"), qPrintable(reason));
    QCOMPARE(bench.content(), before);
    QStringList problems;
    QCOMPARE(int(bench->drives(&problems).size()), 1);
}

void tst_Bench::neverSettlingForOnceEndsWithTheRestart()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QStringList problems;
    QVERIFY(bench->setFault("A", numberFault("never-settles", 0, true), &reason));
    QCOMPARE(bench->query(&problems).first().firmwareStatus, 0);
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench->query(&problems).first().firmwareStatus, 1);
    QVERIFY(bench.drive("A").faults.isEmpty());
}

void tst_Bench::aRefusedBenchLeavesNothing()
{
    QTemporaryDir folder;
    QVector<Drive> drives = sampleDrives();
    drives.last().model = "Boulder";
    QString reason;
    QVERIFY(!Bench(folder.path(), QString()).create(drives, false, &reason));
    QVERIFY2(reason.contains("Boulder"), qPrintable(reason));
    QVERIFY(QDir(folder.path()).isEmpty());

    // The folder itself was made for the bench and goes with it.
    QVERIFY(!Bench(folder.filePath("new"), QString()).create(drives, false, &reason));
    QVERIFY(QDir(folder.path()).isEmpty());

    // No folder can be made below one of the kernel's.
    QVERIFY(!Bench("/proc/bench", QString()).create({}, false, &reason));
    QVERIFY2(reason.startsWith("cannot make the folder /proc/bench: "), qPrintable(reason));
}

void tst_Bench::aMissingFolderIsReportedAndEmpty()
{
    Bench bench("/nowhere/bench", QString());
    QStringList problems;
    QVERIFY(bench.query(&problems).isEmpty());
    QCOMPARE(int(problems.size()), 1);
    QVERIFY2(problems.first().contains("/nowhere/bench") && problems.first().contains("No such file"),
        qPrintable(problems.first()));
    QString reason;
    QVERIFY(!bench.plug("A", &reason));
    QVERIFY(!bench.flash("A", 1, "image", &reason));
    QCOMPARE(bench.unmount("A"), 0);
}

void tst_Bench::readingLeavesNoTraceInAnotherFolder()
{
    QTemporaryDir folder;
    Bench bench(folder.path(), QString());
    QStringList problems;
    QString reason;
    bench.query(&problems);
    bench.drives(&problems);
    bench.host(&problems);
    logCall(bench.folder(), {"ls"});
    bench.unmount("A");
    QVERIFY(!bench.setFault("A", numberFault("verify-error"), &reason));
    QVERIFY(!Companion(bench.folder()).install(&reason));
    QVERIFY(QDir(folder.path()).isEmpty());
}

void tst_Bench::pluggingAndUnplugging()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(!bench->plug("A", &reason));
    QVERIFY2(reason.contains("already") && reason.contains("replug"), qPrintable(reason));
    QVERIFY(bench->unplug("A", &reason));
    QCOMPARE(bench->state(bench.drive("A")), DriveState::Unplugged);
    QVERIFY(!bench.drive("A").mounted);
    QVERIFY(!bench->unplug("A", &reason));
    QVERIFY2(reason.contains("drive-bench plug"), qPrintable(reason));
    QVERIFY(bench->plug("A", &reason));
    QCOMPARE(bench->state(bench.drive("A")), DriveState::Ready);
    QVERIFY(bench.drive("A").mounted);
    QCOMPARE(bench.drive("A").powerUps, std::int64_t(2));
}

void tst_Bench::anUnpluggedDriveIsNotDiscovered()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    QString reason;
    QVERIFY(bench->unplug("A", &reason));
    QStringList problems;
    const QVector<DriveRecord> records = bench->query(&problems);
    QCOMPARE(int(records.size()), 1);
    QCOMPARE(records.first().serialNumber, QString("B"));
}

void tst_Bench::anUnknownDriveIsRefused()
{
    TemporaryBench bench;
    const auto before = bench.content();
    QString reason;
    Drive found;
    QVERIFY(!bench->drive("A", &found, &reason));
    QVERIFY2(reason.contains("no drive with that serial number") && reason.contains("drive-bench list"),
        qPrintable(reason));
    QVERIFY(!bench->plug("A", &reason));
    QVERIFY(!bench->remove("A", &reason));
    QVERIFY(!bench->remove("../host", &reason));
    QVERIFY(!bench->setFault("A", numberFault("verify-error"), &reason));
    QCOMPARE(bench.content(), before);
}

void tst_Bench::addingRefuses_data()
{
    QTest::addColumn<QString>("serial");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("reason");
    QTest::newRow("model") << "B"
                           << "Boulder"
                           << "no model \"Boulder\"";
    QTest::newRow("no serial number") << ""
                                      << "Pebble"
                                      << "1 to 80 characters";
    QTest::newRow("long serial number") << QString(81, 'x') << "Pebble"
                                        << "this one 81";
    QTest::newRow("taken") << "A"
                           << "Pebble"
                           << "is on the bench";
}

void tst_Bench::addingRefuses()
{
    QFETCH(QString, serial);
    QFETCH(QString, model);
    QFETCH(QString, reason);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const auto before = bench.content();
    Drive drive;
    drive.serial = serial;
    drive.model = model;
    QString found;
    QVERIFY(!bench->add(drive, &found));
    QVERIFY2(found.contains(reason), qPrintable(found));
    QCOMPARE(bench.content(), before);
}

void tst_Bench::removingTakesBothFiles()
{
    TemporaryBench bench;
    const auto before = bench.content();
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->remove("A", &reason));
    QCOMPARE(bench.content(), before);
}

void tst_Bench::aDriveRunsWhatWasInFlashAtPowerUp()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    {
        FlashChip chip(bench->chipFile("A"), FlashChip::Write);
        QVERIFY(chip.load(FirmwareImage::forModel(*findModel("Pebble"), "7", "8")));
    }
    QCOMPARE(bench.drive("A").runningFirmware, QString("0.9"));
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench.drive("A").runningFirmware, QString("7"));
    QCOMPARE(bench.drive("A").runningConfiguration, QString("8"));
}

void tst_Bench::aBlankChipBootsFromRom()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(removeFile(bench->chipFile("A"), &reason));
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench->state(bench.drive("A")), DriveState::BootRom);
    const DriveRecord record = bench->record(bench.drive("A"));
    QCOMPARE(record.firmwareStatus, 3);
    QCOMPARE(record.configurationStatus, 3);
    QCOMPARE(record.firmwareVersion, QString());
    QCOMPARE(record.chipsetType, 1);
    QVERIFY2(bench->flash("A", 1, bench.image("Pebble"), &reason), qPrintable(reason));
}

void tst_Bench::statusesFollowTheImageFolder()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QCOMPARE(bench->record(bench.drive("A")).newFirmwareVersion, findModel("Pebble")->newestFirmware);
    const Model &model = *findModel("Pebble");
    QString reason;
    QVERIFY(replaceFile(bench.image("Pebble"), FirmwareImage::forModel(model, "0.9", "2").encode(), &reason));
    DriveRecord record = bench->record(bench.drive("A"));
    QCOMPARE(record.newFirmwareVersion, QString("0.9"));
    QCOMPARE(record.firmwareStatus, 2);
    QCOMPARE(record.configurationStatus, 1);
    // Without a sound image the catalogue says what is new.
    QVERIFY(replaceFile(bench.image("Pebble"), "TFW", &reason));
    record = bench->record(bench.drive("A"));
    QCOMPARE(record.newFirmwareVersion, model.newestFirmware);
    QCOMPARE(record.firmwareStatus, 1);
}

void tst_Bench::queriesTakeTimeWithASlowProbe()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("slow-probe", 150), &reason));
    QElapsedTimer clock;
    clock.start();
    QStringList problems;
    QCOMPARE(int(bench->query(&problems).size()), 1);
    QVERIFY(clock.elapsed() >= 150);
}

void tst_Bench::statusesSettleAfterQueries()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("settle-queries", 2), &reason));
    QStringList problems;
    QVector<int> statuses;
    for (int i = 0; i < 4; ++i) {
        statuses.append(bench->query(&problems).first().firmwareStatus);
    }
    QCOMPARE(statuses, QVector<int>({0, 0, 1, 1}));
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench->query(&problems).first().configurationStatus, 0);
}

void tst_Bench::statusesSettleAfterTime()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("settle-time", 200, true), &reason));
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QStringList problems;
    QCOMPARE(bench->query(&problems).first().firmwareStatus, 0);
    QTRY_COMPARE(bench->query(&problems).first().firmwareStatus, 1);
    QVERIFY(bench.drive("A").faults.isEmpty());
}

void tst_Bench::statusesNeverSettle()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("never-settles"), &reason));
    QStringList problems;
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(bench->query(&problems).first().firmwareStatus, 0);
    }
    QVERIFY(bench->clearFault("A", "never-settles", &reason));
    QCOMPARE(bench->query(&problems).first().firmwareStatus, 1);
}

void tst_Bench::recordFaults_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint64>("number");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("seen");
    const QString none;
    QTest::newRow("firmware-status") << "firmware-status" << qint64(-7) << none << none << "-7";
    QTest::newRow("configuration-status") << "configuration-status" << qint64(99) << none << none << "99";
    QTest::newRow("chipset 4") << "chipset" << qint64(4) << none << none << "4";
    QTest::newRow("chipset negative") << "chipset" << qint64(-2147483648LL) << none << none << "-2147483648";
    QTest::newRow("vendor-id") << "vendor-id" << qint64(0xFFFF) << none << none << "65535";
    QTest::newRow("product-id") << "product-id" << qint64(0x0001) << none << none << "1";
    QTest::newRow("wrong-image") << "wrong-image" << qint64(0) << none << none << "breakwater-mk-ii.tfw";
    QTest::newRow("duplicate-serial") << "duplicate-serial" << qint64(0) << none << "B"
                                      << "B";
    const QString bytes = QString("<b>") + QChar(0) + QChar(0xFF) + "%2";
    for (const QString &field : faultFields()) {
        QTest::newRow(qPrintable("text " + field)) << "text" << qint64(0) << field << bytes << bytes;
    }
}

void tst_Bench::recordFaults()
{
    QFETCH(QString, name);
    QFETCH(qint64, number);
    QFETCH(QString, field);
    QFETCH(QString, text);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    Fault fault = textFault(qPrintable(name), text, field);
    fault.number = number;
    QString reason;
    QVERIFY2(bench->setFault("A", fault, &reason), qPrintable(reason));
    QStringList problems;
    const DriveRecord record = bench->query(&problems).first();
    const QMap<QString, QString> seen{{"firmware-status", QString::number(record.firmwareStatus)},
        {"configuration-status", QString::number(record.configurationStatus)},
        {"chipset", QString::number(record.chipsetType)}, {"vendor-id", QString::number(record.vendorId)},
        {"product-id", QString::number(record.productId)}, {"wrong-image", record.firmwareFileName},
        {"duplicate-serial", record.serialNumber}, {"textauxiliaryText1", record.auxiliaryText1},
        {"textmodelName", record.modelName}, {"textserialNumber", record.serialNumber},
        {"textauxiliaryText2", record.auxiliaryText2}, {"textfirmwareVersion", record.firmwareVersion},
        {"textfirmwareFileName", record.firmwareFileName},
        {"textnewFirmwareVersion", record.newFirmwareVersion}};
    QTEST(seen.value(name + field), "seen");
    QVERIFY(bench->clearFault("A", QString(), &reason));
    QCOMPARE(bench->query(&problems).first().serialNumber, QString("A"));
}

void tst_Bench::aFaultForOnceIsUsedUpByOneQuery()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("chipset", 4, true), &reason));
    QVERIFY(bench->setFault("A", numberFault("vendor-id", 1), &reason));
    QStringList problems;
    QCOMPARE(bench->query(&problems).first().chipsetType, 4);
    const DriveRecord second = bench->query(&problems).first();
    QCOMPARE(second.chipsetType, 1);
    QCOMPARE(int(second.vendorId), 1);
}

void tst_Bench::lookingAtADriveUsesNothingUp()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("chipset", 4, true), &reason));
    QVERIFY(bench->setFault("A", numberFault("settle-queries", 1), &reason));
    const auto before = bench.content();
    QCOMPARE(bench->record(bench.drive("A")).chipsetType, 4);
    QCOMPARE(bench->record(bench.drive("A")).firmwareStatus, 0);
    QCOMPARE(bench.content(), before);
}

void tst_Bench::aDriveDoesNotComeBack()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("no-return", 0, true), &reason));
    QStringList problems;
    QCOMPARE(int(bench->query(&problems).size()), 1);
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench->state(bench.drive("A")), DriveState::Silent);
    QVERIFY(bench->query(&problems).isEmpty());
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(int(bench->query(&problems).size()), 1);
}

void tst_Bench::aDriveComesBackWithAnotherSerialNumber()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", textFault("new-serial", "OTHER", QString(), true), &reason));
    QStringList problems;
    QCOMPARE(bench->query(&problems).first().serialNumber, QString("A"));
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench->query(&problems).first().serialNumber, QString("OTHER"));
    QVERIFY(!bench->flash("A", 1, bench.image("Pebble"), &reason));
    QVERIFY2(bench->flash("OTHER", 1, bench.image("Pebble"), &reason), qPrintable(reason));
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench->query(&problems).first().serialNumber, QString("A"));
}

void tst_Bench::aDriveIsListedTwice()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", textFault("duplicate-serial", QString(), QString(), true), &reason));
    QStringList problems;
    QCOMPARE(int(bench->query(&problems).size()), 2);
    QCOMPARE(int(bench->query(&problems).size()), 1);
}

void tst_Bench::settingAFaultAgainReplacesIt()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("flash-error", 1), &reason));
    QVERIFY(bench->setFault("A", numberFault("flash-error", 2, true), &reason));
    QVERIFY(bench->setFault("A", textFault("text", "x", "modelName"), &reason));
    QVERIFY(bench->setFault("A", textFault("text", "y", "serialNumber"), &reason));
    const QVector<Fault> faults = bench.drive("A").faults;
    QCOMPARE(int(faults.size()), 3);
    QCOMPARE(faults.first().number, qint64(2));
    QVERIFY(faults.first().once);
}

void tst_Bench::clearingFaults()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(!bench->clearFault("A", "verify-error", &reason));
    QVERIFY2(reason.contains("is not set"), qPrintable(reason));
    QVERIFY(bench->clearFault("A", QString(), &reason));
    QVERIFY(bench->setFault("A", numberFault("verify-error"), &reason));
    QVERIFY(bench->setFault("A", numberFault("no-return"), &reason));
    QVERIFY(bench->clearFault("A", "verify-error", &reason));
    QCOMPARE(bench.drive("A").faults.first().name, QString("no-return"));
}

void tst_Bench::unmounting()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("unmount-returns", 2, true), &reason));
    QCOMPARE(bench->unmount("A"), 2);
    QVERIFY(bench.drive("A").mounted);
    QCOMPARE(bench->unmount("A"), 1);
    QVERIFY(!bench.drive("A").mounted);
    QVERIFY(bench->setFault("A", numberFault("unmount-returns", 0), &reason));
    QCOMPARE(bench->unmount("A"), 0);
    QVERIFY(bench->unplug("A", &reason));
    QVERIFY(bench->clearFault("A", QString(), &reason));
    QCOMPARE(bench->unmount("A"), 0);
    QCOMPARE(bench->unmount("B"), 0);
}

void tst_Bench::changesShowInTheMark()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    // A change that has only just been made lets the mark move with the clock.
    QByteArray mark;
    const auto isAtRest = [&] {
        mark = bench->changeMark();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return bench->changeMark() == mark;
    };
    QTRY_VERIFY(isAtRest());
    QString reason;
    QVERIFY(bench->unplug("A", &reason));
    QVERIFY(bench->changeMark() != mark);
    mark = bench->changeMark();
    QVERIFY(Companion(bench.folder()).install(&reason));
    QVERIFY(bench->changeMark() != mark);
}

void tst_Bench::aChangeThatIsRefusedChangesNothing()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const auto before = bench.content();
    QString reason;
    const auto refusing = [](Drive *drive, QString *why) {
        drive->plugged = false;
        *why = "no";
        return false;
    };
    QVERIFY(!bench->changeDrive("A", refusing, &reason));
    QCOMPARE(reason, QString("no"));
    QCOMPARE(bench.content(), before);
}

void tst_Bench::companionIsInstalledAndRemoved()
{
    TemporaryBench bench;
    QString reason;
    QStringList problems;
    QVERIFY(!Companion(bench.folder()).uninstall(&reason));
    QVERIFY(!Companion(bench.folder()).start("tool", &reason));
    QVERIFY2(reason.contains("companion install"), qPrintable(reason));
    QVERIFY(!Companion(bench.folder()).stop(&reason));
    QVERIFY(Companion(bench.folder()).install(&reason));
    QVERIFY(!Companion(bench.folder()).install(&reason));
    QVERIFY(bench->host(&problems).companionInstalled);
    QVERIFY(bench->host(&problems).extensionInstalled);
    QVERIFY(Companion(bench.folder()).uninstall(&reason));
    QVERIFY(!bench->host(&problems).extensionInstalled);
}

QTEST_GUILESS_MAIN(tst_Bench)
#include "tst_Bench.moc"
