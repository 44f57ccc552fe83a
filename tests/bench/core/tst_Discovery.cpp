#include "bench/core/Discovery.h"

#include "bench/core/Files.h"
#include "bench/core/Record.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <filesystem>

using namespace bench;
using namespace std::string_literals;

/// What discovery reports of the drives of a bench, and which faults it uses up.
class tst_Discovery : public QObject
{
    Q_OBJECT

private slots:
    void reportsWhatADriveIs();
    void reportsStatuses_data();
    void reportsStatuses();
    void aFaultChangesTheReport_data();
    void aFaultChangesTheReport();
    void settlesAfterQueries();
    void settlesAfterATime();
    void neverSettlesUntilItIsUnplugged();
    void aSlowProbeTakesItsTime();
    void drivesThatAreNotAttachedAreNotReported();
    void imagesDecideWhatIsUpToDate();
};

void tst_Discovery::reportsWhatADriveIs()
{
    TemporaryBench bench;
    bench.addOutdated("\u00E9", "Lamina Slim");
    bench.edit("\u00E9", [](Drive &drive) { drive.flashFirmware = "in flash, not running"; });
    const Json expected{{"auxiliaryText1", "USB"}, {"productId", 0x1A28}, {"modelName", "Lamina Slim"},
        {"serialNumber", "\u00E9"}, {"vendorId", 0x0E7A}, {"auxiliaryText2", "1"}, {"firmwareVersion", "0.9"},
        {"firmwareFileName", "lamina-slim.tfw"}, {"newFirmwareVersion", "3.20"}, {"chipsetType", 2},
        {"firmwareStatus", 1}, {"configurationStatus", 1}};
    QCOMPARE(toJson(bench.query().at(0)).dump(), expected.dump());
    QCOMPARE(toJson(bench.record("\u00E9")).dump(), expected.dump());
    QCOMPARE(bench.query().at(0).serialNumber, "\xE9"s);
}

void tst_Discovery::reportsStatuses_data()
{
    QTest::addColumn<std::string>("change"); // members that are set
    QTest::addColumn<int>("firmware");
    QTest::addColumn<int>("configuration");
    const auto row = [](const char *change, int firmware, int configuration) {
        addRow(change, change + ""s, firmware, configuration);
    };
    using namespace Status;
    row("{}", UpToDate, UpToDate);
    row(R"({"runningFirmware": "1"})", UpdateRequired, UpToDate);
    row(R"({"runningConfiguration": "1"})", UpToDate, UpdateRequired);
    row(R"({"flashFirmware": "1"})", UpToDate, UpToDate);
    row(R"({"runningFirmware": ""})", Unknown, Unknown);
    row(R"({"incomplete": true})", Unknown, Unknown);
    row(R"({"chipset": 0})", Unknown, Unknown);
    row(R"({"chipset": 4})", UpToDate, UpToDate);
    row(R"({"faults": [{"fault": "never-settles"}], "incomplete": true})", NotYetDetermined,
        NotYetDetermined);
}

void tst_Discovery::reportsStatuses()
{
    QFETCH(std::string, change);
    TemporaryBench bench;
    addDrive(bench.store(), drive("A"));
    bench.edit("A", [&change](Drive &drive) {
        Json json = drive;
        json.update(Json::parse(change));
        drive = driveFromJson(json);
    });
    const DeviceInfo record = bench.query().at(0);
    QTEST(record.firmwareStatus, "firmware");
    QTEST(record.configurationStatus, "configuration");
    const bool isIncomplete = contains(change, "incomplete");
    QCOMPARE(record.firmwareVersion.empty(), isIncomplete || contains(change, R"("runningFirmware": "")"));
    QCOMPARE(record.auxiliaryText2.empty(), isIncomplete);
}

void tst_Discovery::aFaultChangesTheReport_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<int>("records");
    QTest::addColumn<std::string>("field");
    QTest::addColumn<std::string>("value");
    QTest::addColumn<bool>("isUsedUp"); // by a query, when it is set for once
    addRow("report", "report modelName=\u00E9"s, 1, "modelName"s, "\u00E9"s, true);
    addRow("another's", "report serialNumber=B"s, 1, "serialNumber"s, "B"s, true);
    addRow("twice", "duplicate-serial"s, 2, "serialNumber"s, "A"s, true);
    addRow("other image", "wrong-image"s, 1, "firmwareFileName"s, "breakwater-mk-ii.tfw"s, false);
}

void tst_Discovery::aFaultChangesTheReport()
{
    QFETCH(std::string, text);
    QFETCH(std::string, field);
    QFETCH(std::string, value);
    QFETCH(bool, isUsedUp);
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.addOutdated("Z", "Harbour");
    bench.setFault("A", text, true);
    const std::string usual = toJson(bench.query().back())[field];
    const auto found = [&] { return bench.query(); };
    bench.setFault("A", text);
    for (int i = 0; i < 2; ++i) {
        const std::vector<DeviceInfo> devices = found();
        QTEST(int(devices.size()) - 1, "records");
        QCOMPARE(toJson(devices.front())[field].get<std::string>(), value);
        QCOMPARE(toJson(devices.back())[field].get<std::string>(), usual);
    }
    bench.setFault("A", text, true);
    QCOMPARE(toJson(bench.record("A"))[field].get<std::string>(), value); // looking at it uses nothing up
    QCOMPARE(toJson(found().front())[field].get<std::string>(), value);
    QCOMPARE(bench.drive("A").faults.empty(), isUsedUp);
}

void tst_Discovery::settlesAfterQueries()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.setFault("A", "settle-queries 2", true);
    bench.replug("A");
    for (const int status : {0, 0, 1}) {
        QCOMPARE(bench.query().at(0).firmwareStatus, status);
    }
    QVERIFY(bench.drive("A").faults.empty());
    bench.setFault("A", "settle-queries 1");
    bench.replug("A");
    bench.query();
    QCOMPARE(bench.query().at(0).configurationStatus, 1);
    bench.replug("A"); // it stays until it is cleared
    QCOMPARE(bench.query().at(0).configurationStatus, 0);
}

void tst_Discovery::settlesAfterATime()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.setFault("A", "settle-time 10000", true);
    QCOMPARE(bench.query().at(0).firmwareStatus, 0);
    bench.edit("A", [](Drive &drive) { drive.pluggedAt = now() - 9000; });
    QCOMPARE(bench.query().at(0).firmwareStatus, 0);
    bench.edit("A", [](Drive &drive) { drive.pluggedAt = now() - 10001; });
    QCOMPARE(bench.query().at(0).firmwareStatus, 1);
    QVERIFY(bench.drive("A").faults.empty());
}

void tst_Discovery::neverSettlesUntilItIsUnplugged()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.setFault("A", "never-settles", true);
    bench.query();
    QCOMPARE(bench.query().at(0).firmwareStatus, 0);
    bench.replug("A");
    QCOMPARE(bench.query().at(0).firmwareStatus, 1);
}

void tst_Discovery::aSlowProbeTakesItsTime()
{
    TemporaryBench bench;
    for (const char *serial : {"A", "B", "C"}) {
        bench.addOutdated(serial);
        bench.setFault(serial, "slow-probe 150", *serial == 'A');
    }
    unplugDrive(bench.store(), "C");
    const auto elapsed = [&bench] {
        QElapsedTimer clock;
        clock.start();
        bench.query();
        return clock.elapsed();
    };
    const qint64 first = elapsed();
    const qint64 second = elapsed();
    QVERIFY2(first >= 300 && first < 445, qPrintable(QString::number(first)));
    QVERIFY2(second >= 150 && second < 295, qPrintable(QString::number(second)));
}

void tst_Discovery::drivesThatAreNotAttachedAreNotReported()
{
    TemporaryBench bench;
    for (const char *serial : {"A", "B", "C"}) {
        bench.addOutdated(serial);
        bench.setFault(serial, "report productId=1", true);
    }
    unplugDrive(bench.store(), "A");
    bench.edit("B", [](Drive &drive) { drive.answers = false; });
    QCOMPARE(int(bench.query().size()), 1);
    QCOMPARE(int(bench.drive("A").faults.size()), 1);
    QCOMPARE(int(bench.drive("B").faults.size()), 1);
    QVERIFY(bench.drive("C").faults.empty());
}

void tst_Discovery::imagesDecideWhatIsUpToDate()
{
    TemporaryBench bench;
    addDrive(bench.store(), drive("A"));
    const Model &pebble = modelNamed("Pebble");
    const auto offered = [&bench] {
        const DeviceInfo record = bench.query().at(0);
        return record.newFirmwareVersion + ' ' + std::to_string(record.firmwareStatus)
            + std::to_string(record.configurationStatus);
    };
    QCOMPARE(offered(), "2.14 22"s);
    writeFile(bench.image("Pebble"), imageFile(pebble, "7.0", pebble.newestConfiguration));
    QCOMPARE(offered(), "7.0 12"s);
    std::filesystem::create_directory(bench.directory() + "/images"); // the bench's own counts first
    writeFile(bench.directory() + "/images/pebble.tfw", imageFile(pebble, "8.0", "9"));
    QCOMPARE(offered(), "8.0 11"s);
    writeFile(bench.directory() + "/images/pebble.tfw", "damaged");
    QCOMPARE(offered(), "2.14 22"s);
}

static const TestClass<tst_Discovery> discoveryTests;
#include "tst_Discovery.moc"
