#include "bench/core/DriveTable.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Flash.h"
#include "bench/core/SampleBench.h"
#include "bench/core/Unmount.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

/// What a person does with the drives of a bench.
class tst_DriveLifeCycle : public QObject
{
    Q_OBJECT

private slots:
    void addsADrive();
    void addingRefuses_data();
    void addingRefuses();
    void pluggingAndUnplugging();
    void anUnknownDriveIsRefused();
    void aDriveRunsWhatWasInFlashAtPowerUp();
    void aBlankChipBootsFromRom();
    void aHalfWrittenChipBootsFromRom();
    void aDriveDoesNotComeBack();
    void aDriveComesBackWithAnotherSerialNumber();
    void settingAFaultAgainReplacesIt();
    void settingRefusesAValue();
    void clearingFaults();
    void unmounting();
};

namespace {

void replug(TemporaryBench &bench, const std::string &serial)
{
    bench.lifeCycle().unplug(serial);
    bench.lifeCycle().plug(serial);
}

void setChip(TemporaryBench &bench, const std::string &serial, const FlashChip &chip)
{
    bench.store().change([&] {
        DriveTable table(bench.store());
        table.replaceChip(table.get(serial), chip);
    });
}

} // namespace

void tst_DriveLifeCycle::addsADrive()
{
    TemporaryBench bench;
    const std::int64_t before = now();
    Drive given = newDrive(*findModel("Lamina"));
    given.serial = "A";
    given.flashFirmware = "1.0";
    given.flashConfiguration = "2";
    given.flashRate = 77;
    bench.lifeCycle().add(given);
    const Drive drive = bench.drive("A");
    QCOMPARE(drive.state(), DriveState::Ready);
    QCOMPARE(drive.chipset, std::int64_t(Chipset::Asm1051E));
    QCOMPARE(drive.runningFirmware + ' ' + drive.flashFirmware, "1.0 1.0"s);
    QCOMPARE(drive.runningConfiguration + ' ' + drive.flashConfiguration, "2 2"s);
    QCOMPARE(drive.reportedSerial, "A"s);
    QCOMPARE(drive.flashRate, std::int64_t(77));
    QCOMPARE(drive.powerUps, std::int64_t(1));
    QVERIFY(drive.pluggedAt >= before && drive.pluggedAt <= now());
    QVERIFY(drive.mounted && drive.answers && !drive.incomplete && !drive.bootRom);

    given.serial = "B";
    given.plugged = false;
    bench.lifeCycle().add(given);
    QCOMPARE(bench.drive("B").state(), DriveState::Unplugged);
    QVERIFY(!bench.drive("B").mounted);
}

void tst_DriveLifeCycle::addingRefuses_data()
{
    QTest::addColumn<std::string>("serial");
    QTest::addColumn<std::string>("model");
    QTest::addColumn<std::string>("reason");
    QTest::newRow("model") << "B"s
                           << "Boulder"s
                           << "there is no model \"Boulder\"; drive-bench models lists them"s;
    QTest::newRow("no serial number") << ""s
                                      << "Pebble"s
                                      << "a serial number has 1 to 80 characters, this one 0"s;
    QTest::newRow("long serial number") << std::string(81, 'x') << "Pebble"s
                                        << "a serial number has 1 to 80 characters, this one 81"s;
    QTest::newRow("taken")
        << "A"s
        << "Pebble"s
        << "a drive with this serial number is on the bench; choose another with --serial"s;
}

void tst_DriveLifeCycle::addingRefuses()
{
    QFETCH(std::string, serial);
    QFETCH(std::string, model);
    QFETCH(std::string, reason);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    Drive drive;
    drive.serial = serial;
    drive.model = model;
    QCOMPARE(refusal([&] { bench.lifeCycle().add(drive); }), reason);
    QCOMPARE(refusal([&] { bench.lifeCycle().restore(drive, FlashChip()); }), reason);
    QCOMPARE(bench.content(), before);
}

void tst_DriveLifeCycle::pluggingAndUnplugging()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QCOMPARE(refusal([&] { bench.lifeCycle().plug("A"); }),
        "it is plugged in already; to restart it, use: drive-bench replug"s);
    const std::int64_t before = now();
    bench.lifeCycle().unplug("A");
    QCOMPARE(bench.drive("A").state(), DriveState::Unplugged);
    QVERIFY(!bench.drive("A").mounted);
    QVERIFY(bench.drive("A").unpluggedAt >= before && bench.drive("A").unpluggedAt <= now());
    QCOMPARE(refusal([&] { bench.lifeCycle().unplug("A"); }),
        "it is unplugged already; to plug it in, use: drive-bench plug"s);
    bench.lifeCycle().plug("A");
    QCOMPARE(bench.drive("A").state(), DriveState::Ready);
    QVERIFY(bench.drive("A").mounted);
    QVERIFY(bench.drive("A").pluggedAt >= before);
    QCOMPARE(bench.drive("A").powerUps, std::int64_t(2));
}

void tst_DriveLifeCycle::anUnknownDriveIsRefused()
{
    TemporaryBench bench;
    bench.addOutdated("B", "Pebble");
    const std::string before = bench.content();
    const std::string reason =
        "there is no drive with that serial number on the bench; drive-bench list shows those that are";
    DriveLifeCycle lifeCycle = bench.lifeCycle();
    QCOMPARE(refusal([&] { lifeCycle.drive("A"); }), reason);
    QCOMPARE(refusal([&] { lifeCycle.plug("A"); }), reason);
    QCOMPARE(refusal([&] { lifeCycle.unplug("A"); }), reason);
    QCOMPARE(refusal([&] { lifeCycle.remove("A"); }), reason);
    QCOMPARE(refusal([&] { lifeCycle.remove("../host"); }), reason);
    QCOMPARE(refusal([&] { lifeCycle.setFault("A", numberFault(FaultKind::VerifyError)); }), reason);
    QCOMPARE(refusal([&] { lifeCycle.clearFault("A", FaultKind::VerifyError); }), reason);
    QCOMPARE(refusal([&] { lifeCycle.clearFaults("A"); }), reason);
    QCOMPARE(bench.content(), before);
}

void tst_DriveLifeCycle::aDriveRunsWhatWasInFlashAtPowerUp()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    FlashChip chip;
    chip.load(FirmwareImage::forModel(*findModel("Pebble"), "7", "8"));
    setChip(bench, "A", chip);
    QCOMPARE(bench.drive("A").runningFirmware, "0.9"s);
    replug(bench, "A");
    QCOMPARE(bench.drive("A").runningFirmware + bench.drive("A").flashFirmware, "77"s);
    QCOMPARE(bench.drive("A").runningConfiguration + bench.drive("A").flashConfiguration, "88"s);
}

void tst_DriveLifeCycle::aBlankChipBootsFromRom()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    setChip(bench, "A", FlashChip());
    replug(bench, "A");
    const Drive drive = bench.drive("A");
    QCOMPARE(drive.state(), DriveState::BootRom);
    QVERIFY(drive.plugged && !drive.mounted);
    const DeviceInfo record = bench.discovery().records({drive}).front();
    QCOMPARE(record.firmwareStatus, 3);
    QCOMPARE(record.configurationStatus, 3);
    QCOMPARE(record.firmwareVersion + record.auxiliaryText2, ""s);
    QCOMPARE(record.chipsetType, Chipset::Asm1051);
    Flash(bench.store()).run("A", Chipset::Asm1051, bench.image("Pebble"));
    QCOMPARE(bench.drive("A").state(), DriveState::RestartNeeded);
    replug(bench, "A");
    QCOMPARE(bench.drive("A").state(), DriveState::Ready);
}

void tst_DriveLifeCycle::aHalfWrittenChipBootsFromRom()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    FlashChip chip;
    chip.load(FirmwareImage::forModel(*findModel("Pebble"), "7", "8"));
    chip.eraseSector(FlashChip::Configuration.start / FlashChip::SectorSize);
    setChip(bench, "A", chip);
    replug(bench, "A");
    const Drive drive = bench.drive("A");
    QCOMPARE(drive.state(), DriveState::BootRom);
    QVERIFY(drive.bootRom && drive.incomplete);
    QCOMPARE(drive.runningFirmware + drive.runningConfiguration, ""s);
    QCOMPARE(drive.flashFirmware + drive.flashConfiguration, "7"s);
}

void tst_DriveLifeCycle::aDriveDoesNotComeBack()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::NoReturn, 0, true));
    QCOMPARE(bench.discovery().query().size(), std::size_t(1));
    replug(bench, "A");
    QCOMPARE(bench.drive("A").state(), DriveState::Silent);
    QVERIFY(bench.discovery().query().empty());
    replug(bench, "A");
    QCOMPARE(bench.discovery().query().size(), std::size_t(1));
}

void tst_DriveLifeCycle::aDriveComesBackWithAnotherSerialNumber()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const auto reported = [&] { return bench.discovery().query().front().serialNumber; };
    const auto flash = [&](const char *serial) {
        return refusal([&] { Flash(bench.store()).run(serial, Chipset::Asm1051, bench.image("Pebble")); });
    };
    bench.lifeCycle().setFault("A", textFault(FaultKind::NewSerial, "OTHER", "", true));
    QCOMPARE(reported(), "A"s);
    replug(bench, "A");
    QCOMPARE(reported(), "OTHER"s);
    QCOMPARE(flash("A"), "no such drive is attached"s);
    QCOMPARE(flash("OTHER"), ""s);
    replug(bench, "A");
    QCOMPARE(reported(), "A"s);
}

void tst_DriveLifeCycle::settingAFaultAgainReplacesIt()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::FlashError, 1));
    bench.lifeCycle().setFault("A", textFault(FaultKind::Text, "x", "modelName"));
    bench.lifeCycle().setFault("A", textFault(FaultKind::Text, "y", "serialNumber"));
    bench.lifeCycle().setFault("A", numberFault(FaultKind::FlashError, 2, true));
    bench.lifeCycle().setFault("A", textFault(FaultKind::Text, "z", "modelName"));
    std::vector<std::string> texts;
    for (const Fault &fault : bench.drive("A").faults) {
        texts.push_back(faultText(fault));
    }
    QCOMPARE(
        texts, (std::vector<std::string>{"flash-error 2 (once)", "text modelName=z", "text serialNumber=y"}));
}

void tst_DriveLifeCycle::settingRefusesAValue()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    QCOMPARE(refusal([&] { bench.lifeCycle().setFault("A", numberFault(FaultKind::VendorId, -1)); }),
        "vendor-id needs a whole number from 0 to 65535"s);
    QCOMPARE(bench.content(), before);
}

void tst_DriveLifeCycle::clearingFaults()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QCOMPARE(refusal([&] { bench.lifeCycle().clearFault("A", FaultKind::VerifyError); }),
        "the fault \"verify-error\" is not set; drive-bench show lists those that are"s);
    bench.lifeCycle().clearFaults("A"); // none is all there are
    bench.lifeCycle().setFault("A", numberFault(FaultKind::VerifyError));
    bench.lifeCycle().setFault("A", numberFault(FaultKind::NoReturn));
    bench.lifeCycle().clearFault("A", FaultKind::VerifyError);
    QCOMPARE(faultNames(bench.drive("A").faults), "no-return"s);
    bench.lifeCycle().setFault("A", numberFault(FaultKind::VerifyError));
    bench.lifeCycle().clearFaults("A");
    QVERIFY(bench.drive("A").faults.empty());
}

void tst_DriveLifeCycle::unmounting()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const auto unmounted = [&](const char *serial) { return unmount(bench.store(), serial).value; };
    bench.lifeCycle().setFault("A", numberFault(FaultKind::UnmountReturns, 2, true));
    QCOMPARE(unmounted("A"), 2);
    QVERIFY(bench.drive("A").mounted);
    QCOMPARE(unmounted("A"), 1);
    QVERIFY(!bench.drive("A").mounted);
    bench.lifeCycle().setFault("A", numberFault(FaultKind::UnmountReturns, -3));
    QCOMPARE(unmounted("A"), -3);
    QCOMPARE(unmounted("A"), -3);
    bench.lifeCycle().clearFaults("A");
    bench.lifeCycle().unplug("A");
    QCOMPARE(unmounted("A"), 0);
    QCOMPARE(unmounted("B"), 0);
}

static const TestClass<tst_DriveLifeCycle> driveLifeCycleTests;

#include "tst_DriveLifeCycle.moc"
