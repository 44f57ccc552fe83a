// SPDX-License-Identifier: MIT
#include "bench/core/Flash.h"

#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <filesystem>
#include <thread>

using namespace bench;
using namespace std::string_literals;

/// One writing of an image into a drive's flash, and all that can go wrong with it.
class tst_Flash : public QObject
{
    Q_OBJECT

private slots:
    void aUsbDriveRunsItAfterARestart();
    void aFireWireDriveRunsItAtOnce();
    void whatIsRefusedBeforehandWritesNothing();
    void breaksOff();
    void aFaultBeyondTheEndStrikesAtTheEnd();
    void anIncompleteDriveIsFlashedAgain();
    void takesAsLongAsTheRateSays();
    void noticesWhatHappensMeanwhile_data();
    void noticesWhatHappensMeanwhile();
    void theBenchsOwnImageCountsFirst();
};

namespace {

QString stateOf(TemporaryBench &bench, const std::string &serial = "A")
{
    return stateText(bench.drive(serial).state());
}

} // namespace

void tst_Flash::aUsbDriveRunsItAfterARestart()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    QCOMPARE(bench.flash("A"), ""s);
    const Drive drive = bench.drive("A");
    QCOMPARE(drive.flashFirmware + ' ' + drive.flashConfiguration, "2.14 5"s);
    QCOMPARE(drive.runningFirmware + ' ' + drive.runningConfiguration, "0.9 1"s);
    QVERIFY(drive.state() == DriveState::RestartNeeded);
    QCOMPARE(drive.bytesWritten, readImage(bench.image("Pebble")).length);
    QCOMPARE(drive.bytesToWrite, drive.bytesWritten);
    QCOMPARE(drive.lastUpdate, "succeeded"s);
    QVERIFY(now() - drive.lastUpdateAt < 60000);
    QCOMPARE(drive.heartbeat, std::int64_t(0));
    bench.replug("A");
    QCOMPARE(stateOf(bench), "ready");
    QCOMPARE(bench.record("A").firmwareStatus, Status::UpToDate);
}

void tst_Flash::aFireWireDriveRunsItAtOnce()
{
    TemporaryBench bench;
    bench.addOutdated("A", "breakwater Mk II");
    QCOMPARE(bench.flash("A", 6, "breakwater-mk-ii.tfw"), ""s);
    QCOMPARE(stateOf(bench), "ready");
    QCOMPARE(bench.drive("A").runningFirmware, "1.54"s);
}

void tst_Flash::whatIsRefusedBeforehandWritesNothing()
{
    struct Row
    {
        const char *fault; // of "A", which is a "Pebble"; set for once
        int chipset;
        const char *image;
        std::string reason; // behind the path of the image where it begins with a colon
    };
    const Row rows[] = {{"slow-probe 0", 3, "pebble.tfw", "the drive's bridge is Asm1051, not Asm1053"},
        {"slow-probe 0", 1, "harbour.tfw", ": is for the bridge Asm1053, not Asm1051"},
        {"slow-probe 0", 1, "none.tfw", ": No such file or directory"},
        {"truncated-image", 1, "pebble.tfw", ": is truncated: 1000 bytes, its header says 43090"},
        {"truncated-image 60", 1, "pebble.tfw", ": is truncated in its header"},
        {"truncated-image 0", 1, "pebble.tfw", ": is empty"},
        {"wrong-image", 1, "harbour-firewire.tfw", ": is for the bridge OxSemiFireWire934, not Asm1051"},
        {"new-serial X", 1, "pebble.tfw", "no such drive is attached"},
        {"no-return", 1, "pebble.tfw", "no such drive is attached"}};
    for (const Row &row : rows) {
        TemporaryBench bench;
        bench.addOutdated("A");
        bench.setFault("A", row.fault, true);
        bench.replug("A");
        const std::string reason =
            (row.reason[0] == ':' ? bench.imageDirectory() + '/' + row.image : "") + row.reason;
        QCOMPARE(bench.flash("A", row.chipset, row.image), reason);
        const Drive drive = bench.drive("A");
        QCOMPARE(drive.lastUpdate, drive.reportedSerial == "A" ? "failed: " + reason : ""s);
        QVERIFY(drive.flashFirmware == "0.9" && !drive.incomplete && drive.bytesToWrite == 0
            && drive.flashes == 0);
        QCOMPARE(drive.faults.empty(), row.fault != "slow-probe 0"s);
    }
}

void tst_Flash::breaksOff()
{
    const std::tuple<const char *, std::string, const char *, std::int64_t> rows[] = {
        {"flash-error 0", "the flash chip reports an error", "boot ROM", 0},
        {"flash-error 1000", "the flash chip reports an error", "boot ROM", 1000},
        {"pulled-out 1000", "the drive was pulled out", "unplugged", 1000},
        {"verify-error", "the flash chip does not hold what was written", "boot ROM", 42 * 1024}};
    for (const auto &[fault, reason, state, written] : rows) {
        for (const bool once : {false, true}) {
            TemporaryBench bench;
            bench.addOutdated("A");
            bench.setFault("A", fault, once);
            QCOMPARE(bench.flash("A"), reason);
            const Drive drive = bench.drive("A");
            QCOMPARE(stateOf(bench), QString(state));
            QCOMPARE(drive.lastUpdate, "failed: " + reason);
            QCOMPARE(drive.bytesWritten, written);
            QCOMPARE(drive.flashFirmware + drive.flashConfiguration, ""s);
            QVERIFY(drive.incomplete && !drive.isInterrupted() && drive.mounted == drive.plugged);
            QCOMPARE(drive.faults.empty(), once);
        }
    }
}

void tst_Flash::aFaultBeyondTheEndStrikesAtTheEnd()
{
    for (const char *text : {"flash-error 2000000000", "pulled-out 2000000000"}) {
        TemporaryBench bench;
        bench.addOutdated("A");
        bench.setFault("A", text);
        QVERIFY(!bench.flash("A").empty());
        QCOMPARE(bench.drive("A").bytesWritten, bench.drive("A").bytesToWrite);
        QVERIFY(bench.drive("A").incomplete);
    }
}

void tst_Flash::anIncompleteDriveIsFlashedAgain()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.setFault("A", "flash-error 1000", true);
    QVERIFY(!bench.flash("A").empty());
    bench.replug("A");
    QCOMPARE(bench.record("A").firmwareStatus, Status::Unknown);
    QCOMPARE(bench.flash("A"), ""s);
    bench.replug("A");
    QCOMPARE(stateOf(bench), "ready");
    QCOMPARE(bench.drive("A").flashes, std::int64_t(2));
}

void tst_Flash::takesAsLongAsTheRateSays()
{
    TemporaryBench bench;
    const std::int64_t length = readImage(bench.image("Pebble")).length;
    bench.addOutdated("A", "Pebble", length * 2);
    QElapsedTimer clock;
    clock.start();
    std::thread writer([&] { bench.flash("A"); });
    Store other(bench.directory());
    std::int64_t before = 0;
    for (Drive drive = driveNamed(other, "A"); drive.lastUpdate.empty(); drive = driveNamed(other, "A")) {
        // No further than the clock is, and no further behind than twice the time between two looks at it.
        QVERIFY(drive.bytesWritten >= before && drive.bytesWritten <= clock.elapsed() * length / 500 + 100);
        QVERIFY(drive.bytesToWrite == 0 || drive.state() == DriveState::Writing);
        before = drive.bytesWritten;
    }
    writer.join();
    QVERIFY2(clock.elapsed() >= 500 && clock.elapsed() < 1500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(before > length / 2);
}

void tst_Flash::noticesWhatHappensMeanwhile_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<std::string>("reason");
    QTest::addColumn<QString>("lastUpdate"); // of the drive that then goes by "A", if there is one
    const std::string pulledOut = "the drive was pulled out";
    const QString failed = "failed: the drive was pulled out";
    addRow("unplugged", "unplug", pulledOut, failed);
    addRow("replugged", "replug", pulledOut, failed);
    addRow("removed", "remove", pulledOut, "");
    addRow("another drive in its place", "other", pulledOut, "");
    addRow(
        "fault set", "fault", "the flash chip reports an error"s, "failed: the flash chip reports an error");
    addRow("written by another process", "flash", ""s, "succeeded");
    addRow("taken over", "take over", "another process has begun to write the drive"s,
        "failed: another process has begun to write the drive");
    addRow("bench removed", "remove bench", "was taken away or replaced meanwhile"s, "");
    addRow("bench replaced", "replace bench", "was taken away or replaced meanwhile"s, "");
}

void tst_Flash::noticesWhatHappensMeanwhile()
{
    QFETCH(QString, what);
    QFETCH(std::string, reason);
    TemporaryBench bench;
    // A flash of a FireWire drive is a whole update: nothing that comes after it would notice.
    bench.addOutdated("A", "Harbour FireWire", 100000);
    std::string refused;
    std::thread writer([&] { refused = bench.flash("A", 5, "harbour-firewire.tfw"); });
    while (bench.drive("A").bytesWritten == 0) {
        std::this_thread::yield();
    }
    if (what == "unplug") {
        unplugDrive(bench.store(), "A");
    } else if (what == "replug") {
        bench.replug("A");
    } else if (what == "fault") {
        bench.setFault("A", "flash-error 1");
    } else if (what == "flash") {
        QCOMPARE(
            bench.flash("A", 5, "harbour-firewire.tfw"), "the drive is being written by another process"s);
    } else if (what == "take over") {
        bench.edit("A", [](Drive &drive) { ++drive.flashes; });
    } else if (what.endsWith("bench")) {
        std::filesystem::remove_all(bench.directory());
        if (what == "replace bench") {
            createBench(bench.directory(), false, [](Store &) {});
        }
    } else {
        removeDrive(bench.store(), "A");
        if (what == "other") {
            bench.addOutdated("A");
        }
    }
    writer.join();
    QVERIFY2(reason.empty() ? refused.empty() : contains(refused, reason), refused.c_str());
    if (!what.contains("remove") && !what.endsWith("bench")) {
        QTEST(QString::fromStdString(bench.drive("A").lastUpdate), "lastUpdate");
    }
}

void tst_Flash::theBenchsOwnImageCountsFirst()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    std::filesystem::create_directory(bench.directory() + "/images");
    writeFile(bench.directory() + "/images/pebble.tfw", imageFile(modelNamed("Pebble"), "8.0", "9"));
    QCOMPARE(bench.flash("A"), ""s);
    QCOMPARE(bench.drive("A").flashFirmware, "8.0"s);
}

static const TestClass<tst_Flash> flashTests;
#include "tst_Flash.moc"
