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
    void whatIsRefusedBeforehandWritesNothing_data();
    void whatIsRefusedBeforehandWritesNothing();
    void breaksOff_data();
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

void tst_Flash::whatIsRefusedBeforehandWritesNothing_data()
{
    QTest::addColumn<std::string>("serial");
    QTest::addColumn<std::string>("fault"); // of "A", which is a "Pebble"; set for once
    QTest::addColumn<int>("chipset");
    QTest::addColumn<std::string>("image");
    QTest::addColumn<std::string>("reason"); // an asterisk stands for the path of the image
    const auto row = [](const char *serial, const char *fault, int chipset, const char *image,
                         const char *reason) {
        addRow(reason, serial + ""s, fault + ""s, chipset, image + ""s, reason + ""s);
    };
    row("A", "", 3, "pebble.tfw", "the drive's bridge is Asm1051, not Asm1053");
    row("A", "", 1, "harbour.tfw", "*: is for the bridge Asm1053, not Asm1051");
    row("A", "", 1, "none.tfw", "*: No such file or directory");
    row("A", "truncated-image", 1, "pebble.tfw", "*: is truncated: 1000 bytes, its header says 43090");
    row("A", "truncated-image 60", 1, "pebble.tfw", "*: is truncated in its header");
    row("A", "truncated-image 0", 1, "pebble.tfw", "*: is empty");
    row("A", "wrong-image", 1, "harbour-firewire.tfw", "*: is for the bridge OxSemiFireWire934, not Asm1051");
    row("A", "new-serial X", 1, "pebble.tfw", "no such drive is attached");
    row("A", "no-return", 1, "pebble.tfw", "no such drive is attached, since it does not answer");
    row("Z", "", 1, "pebble.tfw", "no such drive is attached, since there is none");
}

void tst_Flash::whatIsRefusedBeforehandWritesNothing()
{
    QFETCH(std::string, serial);
    QFETCH(std::string, fault);
    QFETCH(int, chipset);
    QFETCH(std::string, image);
    QFETCH(std::string, reason);
    TemporaryBench bench;
    bench.addOutdated("A");
    if (!fault.empty()) {
        bench.setFault("A", fault, true);
        bench.replug("A");
    }
    const std::string refused = bench.flash(serial, chipset, image);
    const Drive drive = bench.drive("A");
    QCOMPARE(refused,
        reason[0] == '*' ? bench.imageDirectory() + '/' + image + reason.substr(1)
                         : reason.substr(0, reason.find(", since")));
    QCOMPARE(drive.lastUpdate, drive.reportedSerial == serial ? "failed: " + refused : ""s);
    QCOMPARE(drive.flashFirmware, "0.9"s);
    QVERIFY(!drive.incomplete && drive.bytesToWrite == 0 && drive.flashes == 0);
    QVERIFY(drive.faults.empty());
}

void tst_Flash::breaksOff_data()
{
    QTest::addColumn<std::string>("fault");
    QTest::addColumn<std::string>("reason");
    QTest::addColumn<QString>("state");
    QTest::addColumn<qint64>("written"); // -1 for everything
    const auto row = [](const char *fault, const char *reason, const char *state, qint64 written) {
        addRow(fault, fault + ""s, reason + ""s, QString(state), written);
    };
    row("flash-error 0", "the flash chip reports an error", "boot ROM", 0);
    row("flash-error 1000", "the flash chip reports an error", "boot ROM", 1000);
    row("pulled-out 1000", "the drive was pulled out", "unplugged", 1000);
    row("verify-error", "the flash chip does not hold what was written", "boot ROM", -1);
}

void tst_Flash::breaksOff()
{
    QFETCH(std::string, fault);
    QFETCH(std::string, reason);
    QFETCH(qint64, written);
    for (const bool once : {false, true}) {
        TemporaryBench bench;
        bench.addOutdated("A");
        bench.setFault("A", fault, once);
        QCOMPARE(bench.flash("A"), reason);
        const Drive drive = bench.drive("A");
        QTEST(stateOf(bench), "state");
        QCOMPARE(drive.lastUpdate, "failed: " + reason);
        QVERIFY(!drive.isInterrupted());
        QCOMPARE(qint64(drive.bytesWritten), written < 0 ? qint64(drive.bytesToWrite) : written);
        QCOMPARE(drive.flashFirmware + drive.flashConfiguration, ""s);
        QVERIFY(drive.incomplete && drive.mounted == drive.plugged);
        QCOMPARE(drive.faults.empty(), once);
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
