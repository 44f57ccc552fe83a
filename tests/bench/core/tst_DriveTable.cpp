#include "bench/core/DriveTable.h"
#include "bench/core/SampleBench.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

/// The rows of drives and faults, also those that a person edited.
class tst_DriveTable : public QObject
{
    Q_OBJECT

private slots:
    void everyFieldComesBack();
    void findsDrivesByTheirBytes();
    void findsFirstWhoIsPluggedInAndAnswers();
    void namesARowThatWasEdited_data();
    void namesARowThatWasEdited();
    void aDriveThatCannotBeReadCanBeTakenOff();
    void removesFaultsAndChipToo();
};

namespace {

int count(TemporaryBench &bench, const std::string &table)
{
    return bench.store().database().execAndGet("SELECT count(*) FROM " + table).getInt();
}

} // namespace

void tst_DriveTable::everyFieldComesBack()
{
    Drive drive = newDrive(*findModel("Pebble"));
    drive.serial = "A";
    drive.chipset = -5;
    drive.plugged = drive.answers = drive.mounted = false;
    drive.bootRom = drive.incomplete = true;
    drive.reportedSerial = everyByte();
    drive.runningFirmware = "r\0f"s;
    drive.runningConfiguration = "r\xff";
    drive.flashFirmware = "ff";
    drive.flashConfiguration = "fc";
    drive.lastUpdate = "failed: caf\xc3\xa9";
    std::int64_t Drive::*const numbers[] = {&Drive::bytesWritten, &Drive::bytesToWrite, &Drive::flashRate,
        &Drive::powerUps, &Drive::pluggedAt, &Drive::unpluggedAt, &Drive::queries, &Drive::flashes,
        &Drive::heartbeat, &Drive::lastUpdateAt};
    std::int64_t number = 1;
    for (std::int64_t Drive::*const member : numbers) {
        drive.*member = number++;
    }
    drive.faults = {numberFault(FaultKind::FlashError, 4096, true), numberFault(FaultKind::VerifyError),
        textFault(FaultKind::Text, "\0\xff"s, "modelName"), numberFault(FaultKind::Chipset, -1)};
    TemporaryBench bench;
    bench.lifeCycle().restore(drive, FlashChip());
    const auto compare = [&](const Drive &read) {
        QCOMPARE(read.serial, drive.serial);
        QCOMPARE(read.model, drive.model);
        QCOMPARE(read.chipset, drive.chipset);
        QVERIFY(!read.plugged && !read.answers && !read.mounted && read.bootRom && read.incomplete);
        QCOMPARE(read.reportedSerial, drive.reportedSerial);
        QCOMPARE(read.runningFirmware, drive.runningFirmware);
        QCOMPARE(read.runningConfiguration, drive.runningConfiguration);
        QCOMPARE(read.flashFirmware, drive.flashFirmware);
        QCOMPARE(read.flashConfiguration, drive.flashConfiguration);
        QCOMPARE(read.lastUpdate, drive.lastUpdate);
        for (std::int64_t Drive::*const member : numbers) {
            QCOMPARE(read.*member, drive.*member);
        }
        QCOMPARE(read.faults.size(), drive.faults.size());
        for (std::size_t i = 0; i < read.faults.size(); ++i) {
            QCOMPARE(faultText(read.faults[i]), faultText(drive.faults[i]));
        }
    };
    compare(bench.drive("A"));
    // Every field is also updated, each flag the other way.
    drive.id = bench.drive("A").id;
    drive.plugged = true;
    drive.flashRate = 99;
    drive.lastUpdate.clear();
    drive.faults.erase(drive.faults.begin());
    bench.store().change([&] { DriveTable(bench.store()).update(drive); });
    QVERIFY(bench.drive("A").plugged);
    drive.plugged = false;
    bench.store().change([&] { DriveTable(bench.store()).update(drive); });
    compare(bench.drive("A"));
}

void tst_DriveTable::findsDrivesByTheirBytes()
{
    TemporaryBench bench;
    const std::string all = everyByte();
    for (std::size_t start = 0; start < 256; start += 64) {
        bench.addOutdated(all.substr(start, 64), "Pebble");
    }
    bench.addOutdated("\0"s, "Skiff");
    bench.addOutdated("\0\0"s, "Skiff Go");
    for (std::size_t start = 0; start < 256; start += 64) {
        const std::string serial = all.substr(start, 64);
        bench.lifeCycle().setFault(serial, textFault(FaultKind::Text, all, "auxiliaryText1"));
        QCOMPARE(bench.drive(serial).serial, serial);
        QCOMPARE(bench.drive(serial).faults.front().text, all);
    }
    QCOMPARE(bench.drive("\0"s).model, "Skiff"s);
    QCOMPARE(bench.drive("\0\0"s).model, "Skiff Go"s);
    const std::vector<Drive> drives = bench.lifeCycle().drives();
    QCOMPARE(drives.size(), std::size_t(6));
    QVERIFY(std::is_sorted(drives.begin(), drives.end(),
        [](const Drive &left, const Drive &right) { return left.serial < right.serial; }));
    for (const char *wrong : {"", "../host", "%", "' OR 1"}) {
        QVERIFY(refusal([&] { bench.drive(wrong); }).find("no drive with that serial number") == 9);
    }
}

void tst_DriveTable::findsFirstWhoIsPluggedInAndAnswers()
{
    TemporaryBench bench;
    for (const char *serial : {"B", "A", "C"}) {
        Drive drive = newDrive(*findModel("Pebble"));
        drive.serial = serial;
        drive.reportedSerial = "SAME";
        bench.lifeCycle().restore(drive, FlashChip());
    }
    const auto found = [&] {
        std::optional<Drive> drive;
        bench.store().read([&] { drive = DriveTable(bench.store()).findReported("SAME"); });
        return drive ? drive->serial : "none";
    };
    QCOMPARE(found(), "A"s);
    bench.lifeCycle().unplug("A");
    QCOMPARE(found(), "B"s);
    bench.execute("UPDATE drives SET answers = 0 WHERE serial = x'42'");
    QCOMPARE(found(), "C"s);
    // One that is not attached comes behind all that are.
    bench.lifeCycle().remove("C");
    QCOMPARE(found(), "A"s);
    bench.lifeCycle().remove("A");
    bench.lifeCycle().remove("B");
    QCOMPARE(found(), "none"s);
}

void tst_DriveTable::namesARowThatWasEdited_data()
{
    QTest::addColumn<std::string>("edit");
    QTest::addColumn<std::string>("reason");
    const std::string drives = "UPDATE drives SET ";
    QTest::newRow("model") << drives + "model = CAST('Boulder' AS BLOB)"
                           << "there is no model \"Boulder\"; drive-bench models lists them"s;
    QTest::newRow("rate 0") << drives + "flashRate = 0"
                            << "invalid drive: flashRate must be a whole number from 1 to 1000000000"s;
    QTest::newRow("bridge")
        << drives + "chipset = 4294967297"
        << "invalid drive: chipset must be a whole number from -2147483648 to 2147483647"s;
    QTest::newRow("heartbeat")
        << drives + "heartbeat = 9007199254740993"
        << "invalid drive: heartbeat must be a whole number from 0 to 9007199254740992"s;
    QTest::newRow("version") << drives + "flashFirmware = zeroblob(33)"
                             << "invalid drive: a version has at most 32 characters, this one 33"s;
    QTest::newRow("fault") << "UPDATE faults SET kind = 'smo\nke'"s
                           << "there is no fault \"smo\\x0Ake\""s;
    QTest::newRow("value of a fault") << "UPDATE faults SET number = -1"s
                                      << "slow-probe needs a whole number from 0 to 60000"s;
    QTest::newRow("field of a fault") << "UPDATE faults SET kind = 'text', field = 'colour'"s
                                      << "text needs FIELD=TEXT, where FIELD is one of " + recordFieldNames()
            + ", and \\xNN stands for any byte";
}

void tst_DriveTable::namesARowThatWasEdited()
{
    QFETCH(std::string, edit);
    QFETCH(std::string, reason);
    TemporaryBench bench;
    bench.addOutdated("it's\n", "Pebble");
    bench.lifeCycle().setFault("it's\n", numberFault(FaultKind::SlowProbe, 0));
    bench.addOutdated("OTHER", "Pebble");
    bench.execute(edit + (edit.find("drives") == 7 ? " WHERE serial = CAST('it''s\n' AS BLOB)" : ""));
    const std::string line = "the bench holds an invalid drive it's\\x0A: " + reason
        + "; take it off with: drive-bench remove 'it'\\''s\\x0A'";
    QCOMPARE(refusal([&] { bench.drive("it's\n"); }), line);
    QCOMPARE(refusal([&] { bench.lifeCycle().drives(); }), line);
    QCOMPARE(refusal([&] { bench.discovery().query(); }), line);
    QCOMPARE(refusal([&] { bench.lifeCycle().clearFaults("it's\n"); }), line);
    QCOMPARE(bench.drive("OTHER").serial, "OTHER"s);
}

void tst_DriveTable::aDriveThatCannotBeReadCanBeTakenOff()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("OTHER", "Pebble");
    bench.execute("UPDATE drives SET flashRate = 0 WHERE serial = x'41'");
    bench.lifeCycle().remove("A");
    QCOMPARE(bench.lifeCycle().drives().size(), std::size_t(1));
}

void tst_DriveTable::removesFaultsAndChipToo()
{
    TemporaryBench bench;
    const std::string before = bench.content();
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::NoReturn));
    QCOMPARE(count(bench, "faults") + count(bench, "chips"), 2);
    bench.lifeCycle().remove("A");
    QCOMPARE(count(bench, "faults") + count(bench, "chips"), 0);
    QCOMPARE(bench.content(), before);
}

static const TestClass<tst_DriveTable> driveTableTests;

#include "tst_DriveTable.moc"
