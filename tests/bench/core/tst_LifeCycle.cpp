#include "bench/core/LifeCycle.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

using namespace bench;
using namespace std::string_literals;

Q_DECLARE_METATYPE(std::function<void(bench::Store &)>)

/// What a person does with the drives of a bench.
class tst_LifeCycle : public QObject
{
    Q_OBJECT

private slots:
    void addsAndRemovesDrives();
    void refusesADriveOutsideItsLimits();
    void aDriveRunsWhatItsFlashHoldsWhenItIsPluggedIn();
    void anUnpluggedDriveIsAway();
    void refuses_data();
    void refuses();
    void setsAndClearsFaults();
    void aFaultStrikesAtPowerUp_data();
    void aFaultStrikesAtPowerUp();
    void unmounts_data();
    void unmounts();
    void anAttachedDriveComesBeforeOthers();
};

namespace {

const std::string NoSuchDrive =
    "there is no drive with that serial number on the bench; drive-bench list shows those that are";

} // namespace

void tst_LifeCycle::addsAndRemovesDrives()
{
    TemporaryBench bench;
    bench.addOutdated("B");
    Drive unplugged = drive("A", "Skiff");
    unplugged.plugged = false;
    addDrive(bench.store(), unplugged);
    const std::vector<Drive> drives = allDrives(bench.store());
    QCOMPARE(int(drives.size()), 2);
    QCOMPARE(drives[0].serial + drives[1].serial, "AB"s);
    QCOMPARE(std::string(stateText(drives[0].state())), "unplugged"s);
    QVERIFY(!drives[0].mounted && drives[1].mounted);
    QCOMPARE(drives[1].runningFirmware, "0.9"s);
    QCOMPARE(drives[1].powerUps, std::int64_t(1));
    QCOMPARE(refusal([&] { bench.addOutdated("B"); }),
        "a drive with this serial number is on the bench; choose another with --serial"s);
    removeDrive(bench.store(), "B");
    QCOMPARE(refusal([&] { bench.drive("B"); }), NoSuchDrive);
    QCOMPARE(int(allDrives(bench.store()).size()), 1);
}

void tst_LifeCycle::refusesADriveOutsideItsLimits()
{
    TemporaryBench bench;
    QCOMPARE(refusal([&] { bench.addOutdated("A", "Pebble", 0); }),
        "flashRate: must be a whole number from 1 to 1000000000"s);
    QCOMPARE(
        refusal([&] { bench.addOutdated(""); }), "serial: must have 1 to 80 characters, none above U+00FF"s);
    QVERIFY(allDrives(bench.store()).empty());
}

void tst_LifeCycle::aDriveRunsWhatItsFlashHoldsWhenItIsPluggedIn()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.edit("A", [](Drive &drive) {
        drive.flashFirmware = "7";
        drive.flashConfiguration = "8";
        drive.queries = 5;
    });
    const Drive before = bench.drive("A");
    QVERIFY(before.state() == DriveState::RestartNeeded);
    bench.replug("A");
    const Drive after = bench.drive("A");
    QCOMPARE(after.runningFirmware + ' ' + after.runningConfiguration, "7 8"s);
    QVERIFY(after.state() == DriveState::Ready && after.mounted);
    QCOMPARE(after.powerUps, before.powerUps + 1);
    QCOMPARE(after.queries, std::int64_t(0));
    QVERIFY(after.pluggedAt >= after.unpluggedAt && after.unpluggedAt >= before.pluggedAt);
    QVERIFY(now() - after.pluggedAt < 60000);

    // One whose flash was cut short starts from its boot ROM, and says so.
    bench.edit("A", [](Drive &drive) {
        drive.incomplete = true;
        drive.heartbeat = 1;
    });
    bench.replug("A");
    const Drive cut = bench.drive("A");
    QVERIFY(cut.isInBootRom() && cut.state() == DriveState::BootRom && !cut.mounted);
    QCOMPARE(cut.runningFirmware + cut.runningConfiguration, ""s);
    QCOMPARE(cut.lastUpdate, "interrupted"s);
    QVERIFY(!cut.isInterrupted());
}

void tst_LifeCycle::anUnpluggedDriveIsAway()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.setFault("A", "never-settles", true);
    bench.setFault("A", "settle-queries 1", true);
    unplugDrive(bench.store(), "A");
    const Drive drive = bench.drive("A");
    QVERIFY(!drive.plugged && !drive.isAttached() && !drive.mounted);
    QVERIFY(now() - drive.unpluggedAt < 60000);
    QCOMPARE(int(drive.faults.size()), 1);
    QVERIFY(bench.query().empty());
}

void tst_LifeCycle::refuses_data()
{
    QTest::addColumn<std::function<void(Store &)>>("work"); // "A" is plugged in, "B" is not
    QTest::addColumn<std::string>("reason");
    using Work = std::function<void(Store &)>;
    const auto row = [](const char *name, const Work &work, const std::string &reason) {
        addRow(name, work, reason);
    };
    row(
        "plug", [](Store &store) { plugDrive(store, "A"); },
        "it is plugged in already; to restart it, use: drive-bench replug");
    row(
        "unplug", [](Store &store) { unplugDrive(store, "B"); },
        "it is unplugged already; to plug it in, use: drive-bench plug");
    row(
        "clear", [](Store &store) { clearFault(store, "A", FaultKind::NoReturn); },
        "the fault \"no-return\" is not set; drive-bench show lists those that are");
    row(
        "value",
        [](Store &store) {
            setFault(store, "A", {FaultKind::NoReturn, "1", false});
        },
        "no-return takes no value");
    row(
        "remove no drive", [](Store &store) { removeDrive(store, "C"); }, NoSuchDrive);
    row(
        "plug no drive", [](Store &store) { plugDrive(store, "C"); }, NoSuchDrive);
    row(
        "unplug no drive", [](Store &store) { unplugDrive(store, "C"); }, NoSuchDrive);
    row(
        "fault of no drive",
        [](Store &store) {
            setFault(store, "C", {FaultKind::NoReturn, "", false});
        },
        NoSuchDrive);
    row(
        "clear all of no drive", [](Store &store) { clearFaults(store, "C"); }, NoSuchDrive);
}

void tst_LifeCycle::refuses()
{
    QFETCH(std::function<void(Store &)>, work);
    QFETCH(std::string, reason);
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.addOutdated("B");
    unplugDrive(bench.store(), "B");
    const std::string before = bench.content();
    QCOMPARE(refusal([&] { work(bench.store()); }), reason);
    QCOMPARE(bench.content(), before);
}

void tst_LifeCycle::setsAndClearsFaults()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.addOutdated("B");
    bench.setFault("B", "no-return");
    for (const char *text : {"flash-error 1", "verify-error", "flash-error 2"}) {
        bench.setFault("A", text);
    }
    clearFault(bench.store(), "A", FaultKind::VerifyError);
    QCOMPARE(Json(bench.drive("A").faults).dump(), R"([{"fault":"flash-error","once":false,"value":"2"}])"s);
    clearFaults(bench.store(), "A");
    QVERIFY(bench.drive("A").faults.empty());
    QCOMPARE(int(bench.drive("B").faults.size()), 1);
}

void tst_LifeCycle::aFaultStrikesAtPowerUp_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<bool>("answers");
    QTest::addColumn<std::string>("reportedSerial");
    addRow("no-return", "no-return"s, false, "A"s);
    addRow("new-serial", "new-serial N"s, true, "N"s);
}

void tst_LifeCycle::aFaultStrikesAtPowerUp()
{
    QFETCH(std::string, text);
    QFETCH(bool, answers);
    QFETCH(std::string, reportedSerial);
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.setFault("A", text, true);
    QVERIFY(bench.drive("A").answers);
    QCOMPARE(bench.drive("A").reportedSerial, "A"s);
    bench.replug("A");
    QCOMPARE(bench.drive("A").answers, answers);
    QCOMPARE(bench.drive("A").reportedSerial, reportedSerial);
    QVERIFY(bench.drive("A").faults.empty());
    bench.replug("A"); // it was set for once
    QVERIFY(bench.drive("A").answers);
    QCOMPARE(bench.drive("A").reportedSerial, "A"s);
}

void tst_LifeCycle::unmounts_data()
{
    QTest::addColumn<std::string>("fault"); // of "A", "unplugged" for none
    QTest::addColumn<std::string>("lastUpdate");
    QTest::addColumn<int>("value");
    QTest::addColumn<std::string>("reason");
    const std::string failed = "the volumes were not unmounted, the library returned ";
    addRow("done", ""s, "succeeded"s, 1, ""s);
    addRow("odd", "unmount-returns -3"s, "succeeded"s, -3, ""s);
    addRow("even", "unmount-returns 2"s, "succeeded"s, 2, failed + "2");
    addRow("even and negative", "unmount-returns -2"s, "succeeded"s, -2, failed + "-2");
    addRow("after a failed update", "unmount-returns 0"s, "failed: x"s, 0, ""s);
    addRow("unplugged", "unplugged"s, "succeeded"s, 0,
        "the volumes were not unmounted, the drive was pulled out"s);
}

void tst_LifeCycle::unmounts()
{
    QFETCH(std::string, fault);
    QFETCH(std::string, lastUpdate);
    QFETCH(int, value);
    QFETCH(std::string, reason);
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.edit("A", [&](Drive &drive) { drive.lastUpdate = lastUpdate; });
    if (fault == "unplugged") {
        unplugDrive(bench.store(), "A");
    } else if (!fault.empty()) {
        bench.setFault("A", fault, true);
    }
    const Unmount result = unmountDrive(bench.store(), "A");
    QCOMPARE(result.value, value);
    QCOMPARE(result.reason, reason);
    const Drive drive = bench.drive("A");
    QCOMPARE(drive.mounted, contains(fault, "unmount"));
    QVERIFY(drive.faults.empty());
    QCOMPARE(drive.lastUpdate, reason.empty() ? lastUpdate : "failed: " + reason);
    QCOMPARE(unmountDrive(bench.store(), "B").value, 0);
}

void tst_LifeCycle::anAttachedDriveComesBeforeOthers()
{
    const auto named = [](const char *serial, bool plugged, const char *reported) {
        Drive drive = ::drive(serial);
        drive.plugged = plugged;
        drive.reportedSerial = reported;
        return drive;
    };
    const std::vector<Drive> drives{named("A", false, "X"), named("B", true, "X"), named("C", true, "X"),
        named("X", true, "Y"), named("D", false, "Z"), named("E", false, "Z")};
    QCOMPARE(findReported(drives, "X")->serial, "B"s);
    QCOMPARE(findReported(drives, "Y")->serial, "X"s);
    QCOMPARE(findReported(drives, "Z")->serial, "D"s);
    QVERIFY(!findReported(drives, "A"));
}

static const TestClass<tst_LifeCycle> lifeCycleTests;
#include "tst_LifeCycle.moc"
