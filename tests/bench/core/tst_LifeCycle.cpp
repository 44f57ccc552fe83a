// SPDX-License-Identifier: MIT
#include "bench/core/LifeCycle.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

using namespace bench;
using namespace std::string_literals;

/// What a person does with the drives of a bench.
class tst_LifeCycle : public QObject
{
    Q_OBJECT

private slots:
    void addsAndRemovesDrives();
    void refusesADriveOutsideItsLimits();
    void aDriveRunsWhatItsFlashHoldsWhenItIsPluggedIn();
    void anUnpluggedDriveIsAway();
    void refuses();
    void setsAndClearsFaults();
    void aFaultStrikesAtPowerUp();
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

void tst_LifeCycle::refuses()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.addOutdated("B");
    unplugDrive(bench.store(), "B");
    Store &store = bench.store();
    const std::pair<std::function<void()>, std::string> refusals[] = {
        {[&] { plugDrive(store, "A"); }, "it is plugged in already; to restart it, use: drive-bench replug"},
        {[&] { unplugDrive(store, "B"); }, "it is unplugged already; to plug it in, use: drive-bench plug"},
        {[&] { clearFault(store, "A", FaultKind::NoReturn); },
            "the fault \"no-return\" is not set; drive-bench show lists those that are"},
        {[&] { bench.setFault("A", "no-return 1"); }, "no-return takes no value"},
        {[&] { removeDrive(store, "C"); }, NoSuchDrive}, {[&] { plugDrive(store, "C"); }, NoSuchDrive},
        {[&] { unplugDrive(store, "C"); }, NoSuchDrive}, {[&] { clearFaults(store, "C"); }, NoSuchDrive},
        {[&] { bench.setFault("C", "no-return"); }, NoSuchDrive}};
    const std::string before = bench.content();
    for (const auto &[work, reason] : refusals) {
        QCOMPARE(refusal(work), reason);
        QCOMPARE(bench.content(), before);
    }
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

void tst_LifeCycle::aFaultStrikesAtPowerUp()
{
    for (const std::string text : {"no-return", "new-serial N"}) {
        TemporaryBench bench;
        bench.addOutdated("A");
        const auto serial = [&bench] {
            return bench.drive("A").answers ? bench.drive("A").reportedSerial : "";
        };
        bench.setFault("A", text, true);
        QCOMPARE(serial(), "A"s);
        bench.replug("A");
        QCOMPARE(serial(), text == "no-return" ? ""s : "N"s);
        QVERIFY(bench.drive("A").faults.empty());
        bench.replug("A"); // it was set for once
        QCOMPARE(serial(), "A"s);
    }
}

void tst_LifeCycle::unmounts()
{
    const std::string failed = "the volumes were not unmounted, the library returned ";
    const std::tuple<std::string, std::string, int, std::string> rows[] = {
        {"slow-probe 0", "succeeded", 1, ""}, {"unmount-returns -3", "succeeded", -3, ""},
        {"unmount-returns 2", "succeeded", 2, failed + "2"},
        {"unmount-returns -2", "succeeded", -2, failed + "-2"}, {"unmount-returns 0", "failed: x", 0, ""},
        {"pulled-out 0", "succeeded", 0, "the volumes were not unmounted, the drive was pulled out"}};
    for (const auto &[text, lastUpdate, value, reason] : rows) {
        TemporaryBench bench;
        bench.addOutdated("A");
        bench.setFault("A", text, true);
        bench.edit("A", [update = lastUpdate](Drive &drive) { drive.lastUpdate = update; });
        if (contains(text, "pulled-out")) {
            unplugDrive(bench.store(), "A");
        }
        const Unmount result = unmountDrive(bench.store(), "A");
        QCOMPARE(result.value, value);
        QCOMPARE(result.reason, reason);
        const Drive drive = bench.drive("A");
        QCOMPARE(drive.mounted, contains(text, "unmount"));
        QCOMPARE(drive.faults.empty(), drive.mounted);
        QCOMPARE(drive.lastUpdate, reason.empty() ? lastUpdate : "failed: " + reason);
        QCOMPARE(unmountDrive(bench.store(), "B").value, 0);
    }
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
