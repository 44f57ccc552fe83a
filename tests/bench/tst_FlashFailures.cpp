#include "bench/core/Files.h"
#include "bench/core/Unmount.h"
#include "tests/bench/Flashing.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

#include <chrono>
#include <thread>

using namespace bench;

/// Writing that breaks off: what is left in the drive, and what is noted of it.
class tst_FlashFailures : public QObject
{
    Q_OBJECT

private slots:
    void faultsLeaveTheFlashIncomplete_data();
    void faultsLeaveTheFlashIncomplete();
    void theFirstOfTwoFaultsStrikes();
    void aFaultSetMeanwhileStrikes();
    void aFaultForOnceLetsTheNextFlashThrough();
    void isIncompleteWhenTakenAwayMeanwhile_data();
    void isIncompleteWhenTakenAwayMeanwhile();
    void leavesADriveInItsPlaceAlone();
    void whatWasWrittenIsReadBack();
    void unmountEndsAnUpdate_data();
    void unmountEndsAnUpdate();
};

namespace {

const std::string PulledOut = "the drive was pulled out";

} // namespace

void tst_FlashFailures::faultsLeaveTheFlashIncomplete_data()
{
    QTest::addColumn<int>("fault");
    QTest::addColumn<std::int64_t>("bytes");
    QTest::addColumn<std::int64_t>("written");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, FaultKind fault, int bytes, int written) {
        QTest::newRow(name) << int(fault) << std::int64_t(bytes) << std::int64_t(written)
                            << (fault == FaultKind::PulledOut ? "the drive was pulled out"
                                       : fault == FaultKind::FlashError
                                       ? "the flash chip reports an error"
                                       : "the flash chip does not hold what was written");
    };
    row("error at once", FaultKind::FlashError, 0, 0);
    row("error within a page", FaultKind::FlashError, 1000, 1000);
    row("error at the end of a page", FaultKind::FlashError, 512, 512);
    row("error in the configuration", FaultKind::FlashError, 3100, 3100);
    row("error beyond the end", FaultKind::FlashError, 99999, 3500);
    row("verify error", FaultKind::VerifyError, 0, 3500);
    row("pulled out at once", FaultKind::PulledOut, 0, 0);
    row("pulled out", FaultKind::PulledOut, 3100, 3100);
    row("pulled out at the end", FaultKind::PulledOut, 3500, 3500);
}

void tst_FlashFailures::faultsLeaveTheFlashIncomplete()
{
    QFETCH(int, fault);
    QFETCH(std::int64_t, bytes);
    QFETCH(std::int64_t, written);
    QFETCH(QString, reason);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind(fault), bytes));
    QCOMPARE(QString::fromStdString(flash(bench)), reason);
    Drive drive = bench.drive("A");
    QCOMPARE(drive.bytesWritten, written);
    QVERIFY(drive.incomplete);
    QCOMPARE(drive.flashFirmware + drive.flashConfiguration, std::string());
    QCOMPARE(drive.heartbeat, std::int64_t(0));
    QCOMPARE(drive.faults.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(drive.lastUpdate), "failed: " + reason);
    QVERIFY(now() - drive.lastUpdateAt < 60000);
    QCOMPARE(drive.plugged, FaultKind(fault) != FaultKind::PulledOut);
    QCOMPARE(drive.unpluggedAt > 0, !drive.plugged);
    if (!drive.plugged) {
        bench.lifeCycle().plug("A");
        drive = bench.drive("A");
    }
    QCOMPARE(drive.state(), DriveState::BootRom);
    QCOMPARE(record(bench).firmwareStatus, 3);
    QCOMPARE(record(bench).configurationStatus, 3);
    QCOMPARE(chip(bench).version(FlashChip::Firmware), std::string());
    // The part of the page in which it broke off is in the chip, and nothing behind it.
    FlashChip expected;
    const FirmwareImage image = FirmwareImage::read(bench.image("Pebble"));
    const std::string payload = image.firmware.substr(0, std::size_t(written));
    QCOMPARE(chip(bench).content().substr(256, 3000), payload + std::string(3000 - payload.size(), '\xff'));
}

void tst_FlashFailures::theFirstOfTwoFaultsStrikes()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::PulledOut, 1020));
    bench.lifeCycle().setFault("A", numberFault(FaultKind::FlashError, 1000));
    QCOMPARE(flash(bench), std::string("the flash chip reports an error"));
    QCOMPARE(bench.drive("A").bytesWritten, std::int64_t(1000));
}

void tst_FlashFailures::aFaultSetMeanwhileStrikes()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 3500);
    std::string reason;
    std::thread writer([&] { reason = flash(bench); });
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    bench.lifeCycle().setFault("A", {FaultKind::VerifyError});
    writer.join();
    QCOMPARE(reason, std::string("the flash chip does not hold what was written"));
}

void tst_FlashFailures::aFaultForOnceLetsTheNextFlashThrough()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    for (const FaultKind kind : {FaultKind::FlashError, FaultKind::VerifyError, FaultKind::TruncatedImage,
             FaultKind::WrongImage, FaultKind::PulledOut}) {
        Fault fault{kind};
        fault.number = describe(kind).takesNumber() ? 1 : 0;
        fault.once = true;
        bench.lifeCycle().setFault("A", fault);
        QVERIFY2(!flash(bench, "A", 1, record(bench).firmwareFileName).empty(), describe(kind).name);
        QVERIFY2(bench.drive("A").faults.empty(), describe(kind).name);
        if (kind == FaultKind::PulledOut) {
            bench.lifeCycle().plug("A");
        }
        QCOMPARE(flash(bench), std::string());
    }
}

void tst_FlashFailures::isIncompleteWhenTakenAwayMeanwhile_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"unplugged", "plugged in again at once", "removed", "replaced at once"}) {
        QTest::newRow(how) << how;
    }
}

void tst_FlashFailures::isIncompleteWhenTakenAwayMeanwhile()
{
    QFETCH(QString, how);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 3500);
    std::string reason;
    std::thread writer([&] { reason = flash(bench); });
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    const DriveState before = bench.drive("A").state();
    bench.store().change([&] {
        if (how == "removed" || how == "replaced at once") {
            bench.lifeCycle().remove("A");
        } else {
            bench.lifeCycle().unplug("A");
        }
        if (how == "replaced at once") {
            bench.addOutdated("A", "Pebble");
        } else if (how == "plugged in again at once") {
            // The drive that is back is not the one that was being written.
            bench.lifeCycle().plug("A");
        }
    });
    writer.join();
    QCOMPARE(before, DriveState::Writing);
    QCOMPARE(reason, PulledOut);
    if (how == "removed") {
        QVERIFY(bench.lifeCycle().drives().empty());
        return;
    }
    const Drive drive = bench.drive("A");
    if (how == "replaced at once") {
        QCOMPARE(drive.state(), DriveState::Ready);
        QCOMPARE(drive.lastUpdate, std::string());
        return;
    }
    QCOMPARE(drive.lastUpdate, "failed: " + PulledOut);
    QVERIFY(drive.incomplete);
    QCOMPARE(drive.state(), drive.plugged ? DriveState::BootRom : DriveState::Unplugged);
}

/// The writer of a drive never reaches into the chip of another one with its serial number.
void tst_FlashFailures::leavesADriveInItsPlaceAlone()
{
    TemporaryBench bench;
    FirmwareImage image = FirmwareImage::read(bench.image("Pebble"));
    image.firmware.resize(100000);
    writeFile(bench.imageDirectory() + "/large.tfw", image.encode());
    bench.addOutdated("A", "Pebble", 100000);
    std::string reason;
    std::thread writer([&] { reason = flash(bench, "A", 1, "large.tfw"); });
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    bench.store().change([&] {
        bench.lifeCycle().remove("A");
        bench.addOutdated("A", "Pebble");
    });
    const std::string added = bench.content();
    writer.join();
    QCOMPARE(reason, PulledOut);
    QCOMPARE(bench.content(), added);
}

void tst_FlashFailures::whatWasWrittenIsReadBack()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 3500);
    std::string reason;
    std::thread writer([&] { reason = flash(bench); });
    QTRY_VERIFY(bench.drive("A").bytesWritten > 512);
    bench.store().change(
        [&] { DriveTable(bench.store()).writeChip(bench.drive("A"), FlashChip::PageSize + 7, "?"); });
    writer.join();
    QCOMPARE(reason, std::string("the flash chip does not hold what was written"));
    QCOMPARE(bench.drive("A").state(), DriveState::BootRom);
}

void tst_FlashFailures::unmountEndsAnUpdate_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<bool>("pulledOut");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("mounted");
    QTest::addColumn<QString>("lastUpdate");
    const QString notUnmounted = "failed: the volumes were not unmounted, ";
    QTest::newRow("unmounted") << "" << false << 1 << false << "succeeded";
    QTest::newRow("even value") << "2" << false << 2 << true << notUnmounted + "the library returned 2";
    QTest::newRow("zero") << "0" << false << 0 << true << notUnmounted + "the library returned 0";
    QTest::newRow("even negative value")
        << "-2" << false << -2 << true << notUnmounted + "the library returned -2";
    QTest::newRow("odd value") << "3" << false << 3 << true << "succeeded";
    QTest::newRow("odd negative value") << "-1" << false << -1 << true << "succeeded";
    QTest::newRow("pulled out before")
        << "" << true << 0 << false << notUnmounted + "the drive was pulled out";
}

void tst_FlashFailures::unmountEndsAnUpdate()
{
    QFETCH(QString, fault);
    QFETCH(bool, pulledOut);
    QFETCH(int, value);
    QFETCH(bool, mounted);
    QFETCH(QString, lastUpdate);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QCOMPARE(flash(bench), std::string());
    if (!fault.isEmpty()) {
        bench.lifeCycle().setFault("A", numberFault(FaultKind::UnmountReturns, fault.toInt(), true));
    }
    if (pulledOut) {
        bench.lifeCycle().unplug("A");
    }
    const Unmount result = unmount(bench.store(), "A");
    QCOMPARE(result.value, value);
    const Drive drive = bench.drive("A");
    QCOMPARE(QString::fromStdString(drive.lastUpdate), lastUpdate);
    QCOMPARE(
        "failed: " + QString::fromStdString(result.reason), result.reason.empty() ? "failed: " : lastUpdate);
    QCOMPARE(result.reason.empty(), lastUpdate == "succeeded");
    QCOMPARE(drive.mounted, mounted);
    QVERIFY(drive.faults.empty());
    // What has failed already does not fail again.
    bench.lifeCycle().setFault("A", numberFault(FaultKind::UnmountReturns, 4));
    QCOMPARE(unmount(bench.store(), "A").reason.empty(), lastUpdate != "succeeded");
    QCOMPARE(unmount(bench.store(), "another").value, 0);
}

static const TestClass<tst_FlashFailures> flashFailuresTests;
#include "tst_FlashFailures.moc"
