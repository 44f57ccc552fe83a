// SPDX-License-Identifier: MIT
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
    void reportsStatuses();
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

void tst_Discovery::reportsStatuses()
{
    using namespace Status;
    const std::tuple<std::string, int, int> rows[] = {{"{}", UpToDate, UpToDate},
        {R"({"runningFirmware": "1"})", UpdateRequired, UpToDate},
        {R"({"runningConfiguration": "1"})", UpToDate, UpdateRequired},
        {R"({"flashFirmware": "1"})", UpToDate, UpToDate}, {R"({"runningFirmware": ""})", Unknown, Unknown},
        {R"({"incomplete": true})", Unknown, Unknown}, {R"({"chipset": 0})", Unknown, Unknown},
        {R"({"chipset": 4})", UpToDate, UpToDate},
        {R"({"faults": [{"fault": "never-settles"}]})", NotYetDetermined, NotYetDetermined}};
    for (const auto &[change, firmware, configuration] : rows) {
        TemporaryBench bench;
        Json json = drive("A");
        json.update(Json::parse(change));
        bench.store().change([&] { bench.store().insert(driveFromJson(json)); });
        const DeviceInfo record = bench.query().at(0);
        QVERIFY2(
            record.firmwareStatus == firmware && record.configurationStatus == configuration, change.c_str());
        const bool isIncomplete = json["incomplete"].get<bool>();
        QCOMPARE(record.firmwareVersion.empty(), isIncomplete || json["runningFirmware"] == "");
        QCOMPARE(record.auxiliaryText2.empty(), isIncomplete);
    }
}

void tst_Discovery::aFaultChangesTheReport()
{
    const std::tuple<const char *, int, const char *, std::string> rows[] = {
        {"report modelName=\u00E9", 2, "modelName", "\u00E9"},
        {"report serialNumber=B", 2, "serialNumber", "B"}, {"duplicate-serial", 3, "serialNumber", "A"},
        {"wrong-image", 2, "firmwareFileName", "breakwater-mk-ii.tfw"}};
    for (const auto &[text, count, field, value] : rows) {
        TemporaryBench bench;
        bench.addOutdated("A");
        bench.addOutdated("Z", "Harbour");
        const std::string usual = toJson(bench.query().back())[field];
        bench.setFault("A", text);
        for (int i = 0; i < 2; ++i) {
            const std::vector<DeviceInfo> devices = bench.query();
            QCOMPARE(int(devices.size()), count);
            QCOMPARE(toJson(devices.front())[field].get<std::string>(), value);
            QCOMPARE(toJson(devices.back())[field].get<std::string>(), usual);
        }
        bench.setFault("A", text, true);
        QCOMPARE(toJson(bench.record("A"))[field].get<std::string>(), value); // looking at it uses nothing up
        QCOMPARE(toJson(bench.query().front())[field].get<std::string>(), value);
        QCOMPARE(bench.drive("A").faults.empty(), value != "breakwater-mk-ii.tfw"); // that is for an updater
    }
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
