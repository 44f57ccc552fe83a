#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <filesystem>

using namespace bench;

Q_DECLARE_METATYPE(bench::Fault)

/// What discovery reports of the drives on a bench, and what a query changes.
class tst_BenchDiscovery : public QObject
{
    Q_OBJECT

private slots:
    void reportsADrive();
    void reportsWhoIsPluggedIn();
    void comparesEachVersionByItself_data();
    void comparesEachVersionByItself();
    void offersWhatTheImageHolds();
    void aBridgeWithoutUpdaterHasUnknownStatuses();
    void recordFaults_data();
    void recordFaults();
    void aFaultForOnceIsUsedUpByOneQuery();
    void aQueryUsesUpNothingElse();
    void lookingAtADriveUsesNothingUp();
    void aQuietBenchIsNotWritten();
    void aDriveIsListedTwice();
};

namespace {

/// The fields of a record, one text each.
QMap<QString, std::string> fieldsOf(const DeviceInfo &record)
{
    return {{"auxiliaryText1", record.auxiliaryText1}, {"productId", std::to_string(record.productId)},
        {"modelName", record.modelName}, {"serialNumber", record.serialNumber},
        {"vendorId", std::to_string(record.vendorId)}, {"auxiliaryText2", record.auxiliaryText2},
        {"firmwareVersion", record.firmwareVersion}, {"firmwareFileName", record.firmwareFileName},
        {"newFirmwareVersion", record.newFirmwareVersion},
        {"chipsetType", std::to_string(record.chipsetType)},
        {"firmwareStatus", std::to_string(record.firmwareStatus)},
        {"configurationStatus", std::to_string(record.configurationStatus)}};
}

} // namespace

void tst_BenchDiscovery::reportsADrive()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Lamina Slim SSD");
    const QMap<QString, std::string> expected{{"auxiliaryText1", "USB"},
        {"productId", std::to_string(0x1A2B)}, {"modelName", "Lamina Slim SSD"}, {"serialNumber", "A"},
        {"vendorId", std::to_string(0x0E7A)}, {"auxiliaryText2", "1"}, {"firmwareVersion", "0.9"},
        {"firmwareFileName", "lamina-slim-ssd.tfw"}, {"newFirmwareVersion", "4.05"}, {"chipsetType", "3"},
        {"firmwareStatus", "1"}, {"configurationStatus", "1"}};
    QCOMPARE(fieldsOf(bench.firstOfQuery()), expected);
}

void tst_BenchDiscovery::reportsWhoIsPluggedIn()
{
    TemporaryBench bench;
    QVERIFY(bench.discovery().query().empty());
    bench.addOutdated("B", "Skiff");
    bench.addOutdated("A", "Pebble Triple");
    std::vector<DeviceInfo> records = bench.discovery().query();
    QCOMPARE(records.size(), std::size_t(2));
    QCOMPARE(records[0].serialNumber + records[1].serialNumber, "AB"s);
    QCOMPARE(records[0].auxiliaryText1 + records[1].auxiliaryText1, "FireWireUSB"s);
    bench.lifeCycle().unplug("A");
    records = bench.discovery().query();
    QCOMPARE(records.size(), std::size_t(1));
    QCOMPARE(records[0].serialNumber, "B"s);
    // Whoever asks for the record of an unplugged drive is told.
    QCOMPARE(bench.discovery().records({bench.drive("A")}).at(0).serialNumber, "A"s);
}

void tst_BenchDiscovery::comparesEachVersionByItself_data()
{
    QTest::addColumn<std::string>("firmware");
    QTest::addColumn<std::string>("configuration");
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    QTest::newRow("both") << "0.9"s
                          << "2"s << 2 << 2;
    QTest::newRow("firmware") << "1.0"s
                              << "2"s << 1 << 2;
    QTest::newRow("configuration") << "0.9"s
                                   << "1"s << 2 << 1;
    QTest::newRow("newer than the image") << "9"s
                                          << "9"s << 1 << 1;
}

void tst_BenchDiscovery::comparesEachVersionByItself()
{
    QFETCH(std::string, firmware);
    QFETCH(std::string, configuration);
    TemporaryBench bench;
    writeFile(bench.image("Pebble"), FirmwareImage::forModel(*findModel("Pebble"), "0.9", "2").encode());
    Drive drive;
    drive.serial = "A";
    drive.model = "Pebble";
    drive.chipset = Chipset::Asm1051;
    drive.flashFirmware = firmware;
    drive.flashConfiguration = configuration;
    bench.lifeCycle().add(drive);
    QTEST(bench.firstOfQuery().firmwareStatus, "firmwareStatus");
    QTEST(bench.firstOfQuery().configurationStatus, "configurationStatus");
}

void tst_BenchDiscovery::offersWhatTheImageHolds()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    const Model &model = *findModel("Pebble");
    QCOMPARE(bench.firstOfQuery().newFirmwareVersion, std::string(model.newestFirmware));
    writeFile(bench.image("Pebble"), FirmwareImage::forModel(model, "7", "2").encode());
    QCOMPARE(bench.firstOfQuery().newFirmwareVersion, "7"s);
    QCOMPARE(bench.discovery().query().at(1).newFirmwareVersion, "2.11"s);
    // Without a usable image the catalogue says what is new.
    writeFile(bench.image("Pebble"), "TFW");
    QCOMPARE(bench.firstOfQuery().newFirmwareVersion, std::string(model.newestFirmware));
    std::filesystem::remove(bench.image("Pebble"));
    QCOMPARE(bench.firstOfQuery().newFirmwareVersion, std::string(model.newestFirmware));
    QCOMPARE(bench.firstOfQuery().firmwareStatus, Status::UpdateRequired);
}

void tst_BenchDiscovery::aBridgeWithoutUpdaterHasUnknownStatuses()
{
    TemporaryBench bench;
    Drive drive;
    drive.serial = "A";
    drive.model = "Harbour Duo";
    drive.flashFirmware = drive.flashConfiguration = "1";
    bench.lifeCycle().add(drive);
    QCOMPARE(bench.firstOfQuery().chipsetType, Chipset::NotSupported);
    QCOMPARE(bench.firstOfQuery().firmwareStatus, 3);
    QCOMPARE(bench.firstOfQuery().configurationStatus, 3);
    QCOMPARE(bench.firstOfQuery().firmwareVersion, "1"s);
}

void tst_BenchDiscovery::recordFaults_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QString>("field");
    QTest::addColumn<std::string>("seen");
    const auto number = [](FaultKind kind, std::int64_t value, const char *field) {
        const Fault fault = numberFault(kind, value);
        QTest::newRow(faultText(fault).c_str()) << fault << QString(field) << std::to_string(value);
    };
    for (const std::int64_t code : {-2147483648LL, -7LL, 0LL, 1LL, 99LL, 2147483647LL}) {
        number(FaultKind::FirmwareStatus, code, "firmwareStatus");
        number(FaultKind::ConfigurationStatus, code, "configurationStatus");
        number(FaultKind::Chipset, code, "chipsetType");
    }
    for (const std::int64_t id : {0, 1, 0xFFFF}) {
        number(FaultKind::VendorId, id, "vendorId");
        number(FaultKind::ProductId, id, "productId");
    }
    QTest::newRow("wrong-image") << numberFault(FaultKind::WrongImage) << "firmwareFileName"
                                 << "breakwater-mk-ii.tfw"s;
    QTest::newRow("duplicate-serial") << textFault(FaultKind::DuplicateSerial, "B\0\xff"s) << "serialNumber"
                                      << "B\0\xff"s;
    for (const RecordField &field : recordFields()) {
        for (const std::string &text : {""s, "<b>\0\xff%2"s, everyByte()}) {
            const Fault fault = textFault(FaultKind::Text, text, field.name);
            QTest::newRow(faultText(fault).c_str()) << fault << QString(field.name) << text;
        }
    }
}

void tst_BenchDiscovery::recordFaults()
{
    QFETCH(Fault, fault);
    QFETCH(QString, field);
    QFETCH(std::string, seen);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QMap<QString, std::string> fields = fieldsOf(bench.firstOfQuery());
    bench.lifeCycle().setFault("A", fault);
    const std::string plain = std::exchange(fields[field], seen);
    QCOMPARE(fieldsOf(bench.firstOfQuery()), fields); // that field, and no other
    bench.lifeCycle().clearFaults("A");
    fields[field] = plain;
    QCOMPARE(fieldsOf(bench.firstOfQuery()), fields);
}

void tst_BenchDiscovery::aFaultForOnceIsUsedUpByOneQuery()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::Chipset, 4, true));
    bench.lifeCycle().setFault("A", numberFault(FaultKind::VendorId, 1));
    QCOMPARE(bench.firstOfQuery().chipsetType, Chipset::NoUpdater);
    const DeviceInfo second = bench.firstOfQuery();
    QCOMPARE(second.chipsetType, Chipset::Asm1051);
    QCOMPARE(second.vendorId, std::uint16_t(1));
    // A drive that is not reported keeps its fault.
    bench.lifeCycle().setFault("A", numberFault(FaultKind::Chipset, 4, true));
    bench.lifeCycle().unplug("A");
    bench.discovery().query();
    bench.lifeCycle().plug("A");
    QCOMPARE(bench.firstOfQuery().chipsetType, Chipset::NoUpdater);
}

void tst_BenchDiscovery::aQueryUsesUpNothingElse()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    std::vector<Fault> others;
    for (const FaultDescription &kind : faultDescriptions()) {
        if (kind.usedUpBy != UsedUpBy::Query && kind.usedUpBy != UsedUpBy::Settling) {
            Fault fault =
                parseFault(kind, kind.value == FaultValue::None ? std::nullopt : std::optional("1"s));
            fault.once = true;
            bench.lifeCycle().setFault("A", fault);
            others.push_back(fault);
        }
    }
    bench.firstOfQuery();
    bench.firstOfQuery();
    QCOMPARE(faultNames(bench.drive("A").faults), faultNames(others));
}

void tst_BenchDiscovery::lookingAtADriveUsesNothingUp()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::Chipset, 4, true));
    bench.lifeCycle().setFault("A", numberFault(FaultKind::SettleQueries, 1));
    const std::string before = bench.content();
    const DeviceInfo record = bench.discovery().records({bench.drive("A")}).at(0);
    QCOMPARE(record.chipsetType, Chipset::NoUpdater);
    QCOMPARE(record.firmwareStatus, Status::NotYetDetermined);
    QCOMPARE(bench.content(), before);
}

void tst_BenchDiscovery::aQuietBenchIsNotWritten()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::NeverSettles));
    BenchStore other(bench.directory());
    const auto version = [&other] { return other.database().execAndGet("PRAGMA data_version").getInt(); };
    const int before = version();
    bench.discovery().query();
    QCOMPARE(version(), before);
    bench.lifeCycle().unplug("A");
    QVERIFY(version() != before);
}

void tst_BenchDiscovery::aDriveIsListedTwice()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", textFault(FaultKind::DuplicateSerial, "", "", true));
    const std::vector<DeviceInfo> records = bench.discovery().query();
    QCOMPARE(records.size(), std::size_t(2));
    QCOMPARE(fieldsOf(records[0]), fieldsOf(records[1]));
    QCOMPARE(bench.discovery().query().size(), std::size_t(1));
}

static const TestClass<tst_BenchDiscovery> benchDiscoveryTests;

#include "tst_BenchDiscovery.moc"
