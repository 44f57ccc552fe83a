#include "bench/core/SampleBench.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <tuple>

using namespace bench;

Q_DECLARE_METATYPE(bench::Drive)
Q_DECLARE_METATYPE(bench::DriveState)

/// What a drive is by its values: its state, what a person is told of it, and which values it may have.
class tst_Drive : public QObject
{
    Q_OBJECT

private slots:
    void isInAState_data();
    void isInAState();
    void tellsHowFarItsFlashIs();
    void tellsHowTheLastUpdateEnded();
    void refusesInvalidDrives_data();
    void refusesInvalidDrives();
    void takesWhatIsAtTheLimits();
    void theSampleHoldsOneOfEach();
    void aNewDriveIsUpToDate();
};

namespace {

Drive pebble(const std::function<void(Drive &drive)> &work = [](Drive &) {})
{
    Drive drive = newDrive(*findModel("Pebble"));
    drive.serial = "A";
    drive.runningFirmware = drive.flashFirmware;
    drive.runningConfiguration = drive.flashConfiguration;
    work(drive);
    return drive;
}

} // namespace

void tst_Drive::isInAState_data()
{
    QTest::addColumn<Drive>("drive");
    QTest::addColumn<DriveState>("state");
    QTest::addColumn<std::string>("text");
    QTest::newRow("ready") << pebble() << DriveState::Ready << "ready"s;
    QTest::newRow("unplugged") << pebble([](Drive &drive) { drive.plugged = drive.answers = false; })
                               << DriveState::Unplugged << "unplugged"s;
    QTest::newRow("silent") << pebble([](Drive &drive) { drive.answers = false; }) << DriveState::Silent
                            << "does not answer"s;
    QTest::newRow("other firmware") << pebble([](Drive &drive) { drive.runningFirmware = "1"; })
                                    << DriveState::RestartNeeded << "restart needed"s;
    QTest::newRow("other configuration") << pebble([](Drive &drive) { drive.runningConfiguration = "1"; })
                                         << DriveState::RestartNeeded << "restart needed"s;
    QTest::newRow("complete, still in the boot ROM") << pebble([](Drive &drive) { drive.bootRom = true; })
                                                     << DriveState::RestartNeeded << "restart needed"s;
    const auto beaten = [](std::int64_t ago) {
        return pebble([ago](Drive &drive) {
            drive.incomplete = true;
            drive.heartbeat = ago == 0 ? 0 : now() - ago;
        });
    };
    QTest::newRow("incomplete") << beaten(0) << DriveState::BootRom << "boot ROM"s;
    QTest::newRow("heartbeat of now") << beaten(1) << DriveState::Writing << "being written"s;
    QTest::newRow("old heartbeat") << beaten(1001) << DriveState::BootRom << "boot ROM"s;
    QTest::newRow("unplugged while written") << pebble([](Drive &drive) {
        drive.incomplete = true;
        drive.heartbeat = now();
        drive.plugged = false;
    }) << DriveState::Unplugged << "unplugged"s;
}

void tst_Drive::isInAState()
{
    QFETCH(Drive, drive);
    QFETCH(DriveState, state);
    QFETCH(std::string, text);
    QCOMPARE(drive.state(), state);
    QCOMPARE(drive.progressText(), text); // nothing is to be written, so no progress is told
}

void tst_Drive::tellsHowFarItsFlashIs()
{
    Drive drive = pebble([](Drive &writing) { writing.incomplete = true; });
    for (const auto &[written, toWrite, text] : {std::tuple(0, 200, "being written 0%"),
             {199, 200, "being written 99%"}, {200, 200, "being written 100%"}, {0, 1, "being written 0%"}}) {
        drive.heartbeat = now();
        drive.bytesWritten = written;
        drive.bytesToWrite = toWrite;
        QCOMPARE(drive.progressText(), std::string(text));
    }
    drive.heartbeat = 0;
    QCOMPARE(drive.progressText(), "boot ROM"s);
}

void tst_Drive::tellsHowTheLastUpdateEnded()
{
    Drive drive = pebble();
    drive.lastUpdateAt = 1;
    QCOMPARE(drive.lastUpdateText(), ""s);
    drive.lastUpdate = "failed: why";
    const QDateTime local(QDate(2024, 2, 29), QTime(14, 2, 59));
    drive.lastUpdateAt = local.toMSecsSinceEpoch();
    QCOMPARE(drive.lastUpdateText(), "failed: why, at 14:02"s);
}

void tst_Drive::refusesInvalidDrives_data()
{
    QTest::addColumn<Drive>("drive");
    QTest::addColumn<std::string>("reason");
    QTest::newRow("no serial number") << pebble([](Drive &drive) { drive.serial.clear(); })
                                      << "a serial number has 1 to 80 characters, this one 0"s;
    QTest::newRow("long serial number") << pebble([](Drive &drive) { drive.serial.assign(81, 'x'); })
                                        << "a serial number has 1 to 80 characters, this one 81"s;
    QTest::newRow("model") << pebble([](Drive &drive) { drive.model = "Boul\nder"; })
                           << "there is no model \"Boul\\x0Ader\"; drive-bench models lists them"s;
    QTest::newRow("rate 0") << pebble([](Drive &drive) { drive.flashRate = 0; })
                            << "invalid drive: flashRate must be a whole number from 1 to 1000000000"s;
    QTest::newRow("rate above") << pebble([](Drive &drive) { drive.flashRate = 1000000001; })
                                << "invalid drive: flashRate must be a whole number from 1 to 1000000000"s;
    const auto number = [](const char *name, std::int64_t Drive::*member) {
        const std::string reason =
            "invalid drive: "s + name + " must be a whole number from 0 to 9007199254740992";
        QTest::newRow(name) << pebble([member](Drive &drive) { drive.*member = -1; }) << reason;
        QTest::newRow((name + " above"s).c_str())
            << pebble([member](Drive &drive) { drive.*member = (std::int64_t(1) << 53) + 1; }) << reason;
    };
    number("bytesWritten", &Drive::bytesWritten);
    number("bytesToWrite", &Drive::bytesToWrite);
    number("powerUps", &Drive::powerUps);
    number("pluggedAt", &Drive::pluggedAt);
    number("unpluggedAt", &Drive::unpluggedAt);
    number("queries", &Drive::queries);
    number("flashes", &Drive::flashes);
    number("heartbeat", &Drive::heartbeat);
    number("lastUpdateAt", &Drive::lastUpdateAt);
    QTest::newRow("firmware version") << pebble([](Drive &drive) { drive.flashFirmware.assign(33, '1'); })
                                      << "invalid drive: a version has at most 32 characters, this one 33"s;
    QTest::newRow("configuration revision")
        << pebble([](Drive &drive) { drive.flashConfiguration.assign(9000, '1'); })
        << "invalid drive: a version has at most 32 characters, this one 9000"s;
    QTest::newRow("fault") << pebble([](Drive &drive) {
        drive.faults = {numberFault(FaultKind::NoReturn), numberFault(FaultKind::SlowProbe, -1)};
    }) << "slow-probe needs a whole number from 0 to 60000"s;
}

void tst_Drive::refusesInvalidDrives()
{
    QFETCH(Drive, drive);
    QFETCH(std::string, reason);
    QCOMPARE(refusal([&] { check(drive); }), reason);
}

void tst_Drive::takesWhatIsAtTheLimits()
{
    const Drive drive = pebble([](Drive &largest) {
        largest.serial.assign(80, '\xff');
        largest.chipset = std::numeric_limits<std::int32_t>::min();
        largest.flashRate = Drive::MaximumFlashRate;
        largest.lastUpdateAt = std::int64_t(1) << 53;
        largest.flashFirmware.assign(32, '\0');
        largest.faults = {numberFault(FaultKind::SlowProbe, 60000)};
    });
    QCOMPARE(refusal([&] { check(drive); }), ""s);
}

void tst_Drive::theSampleHoldsOneOfEach()
{
    TemporaryBench bench;
    for (const Drive &drive : sampleDrives()) {
        bench.lifeCycle().add(drive);
    }
    QStringList seen;
    for (const DeviceInfo &record : bench.discovery().query()) {
        seen += QString("%1 %2 %3 %4")
                    .arg(QString::fromStdString(record.auxiliaryText1))
                    .arg(record.chipsetType)
                    .arg(record.firmwareStatus)
                    .arg(record.configurationStatus);
    }
    QCOMPARE(seen,
        QStringList({"USB 1 1 1", "USB 3 1 2", "USB 2 2 1", "FireWire 6 1 1", "USB 1 2 2", "USB 0 3 3"}));
}

void tst_Drive::aNewDriveIsUpToDate()
{
    TemporaryBench bench;
    for (const Model &model : models()) {
        Drive drive = newDrive(model);
        drive.serial = model.name;
        bench.lifeCycle().add(drive);
    }
    const std::vector<DeviceInfo> records = bench.discovery().query();
    QCOMPARE(records.size(), models().size());
    for (const DeviceInfo &record : records) {
        QCOMPARE(record.firmwareStatus, Status::UpToDate);
        QCOMPARE(record.configurationStatus, Status::UpToDate);
        QCOMPARE(record.firmwareFileName, findModel(record.modelName)->imageName());
        QCOMPARE(record.chipsetType, findModel(record.modelName)->chipset);
    }
}

static const TestClass<tst_Drive> driveTests;

#include "tst_Drive.moc"
