#include "bench/core/BenchDocument.h"
#include "bench/core/DriveJson.h"
#include "bench/core/DriveTable.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/SampleBench.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

using namespace bench;

using Fill = std::function<void(TemporaryBench &bench)>;
Q_DECLARE_METATYPE(Fill)

/// A bench as JSON, and made again from it.
class tst_BenchDocument : public QObject
{
    Q_OBJECT

private slots:
    void comesBackAsItWas_data();
    void comesBackAsItWas();
    void namesEachField();
    void holdsAChipThatTheVersionsDoNotTell();
    void missingMembersAreThoseOfANewDrive();
    void aDocumentWithoutDrivesIsAnEmptyBench();
    void processesStayWhereTheyAre();
    void aRecordIsWrittenWithItsBytes();
    void bytesThatAreNoUtf8AreReplaced();
};

namespace {

void setChip(BenchStore &store, const std::string &serial, const FlashChip &chip)
{
    store.change([&] {
        DriveTable table(store);
        table.replaceChip(table.get(serial), chip);
    });
}

/// A bench from a document, exported once more.
std::string imported(const std::string &text)
{
    TemporaryBench bench;
    fillBench(bench.store(), parseBench(text, "bench.json"));
    return bench.content();
}

Drive onlyDrive(const std::string &text)
{
    return parseBench(text, "bench.json").drives.at(0).first;
}

void addFaults(TemporaryBench &bench)
{
    for (const bool once : {false, true}) {
        const std::string serial = once ? "ONCE" : "A";
        bench.addOutdated(serial, "Pebble");
        for (const FaultDescription &kind : faultDescriptions()) {
            Fault fault{kind.kind};
            fault.once = once;
            fault.number = once ? kind.minimum : kind.maximum;
            fault.text = kind.takesText() ? everyByte() : "";
            if (kind.value != FaultValue::Field) {
                bench.lifeCycle().setFault(serial, fault);
            }
        }
        for (const RecordField &field : recordFields()) {
            bench.lifeCycle().setFault(
                serial, textFault(FaultKind::Text, once ? "" : everyByte(), field.name, once));
        }
    }
    bench.lifeCycle().setFault("ONCE", textFault(FaultKind::DuplicateSerial, ""));
    bench.lifeCycle().setFault("ONCE", numberFault(FaultKind::TruncatedImage));
}

void addEveryByte(TemporaryBench &bench)
{
    for (std::size_t start = 0; start < 256; start += 64) {
        Drive drive = newDrive(*findModel("Harbour (FireWire 800)"));
        drive.serial = everyByte().substr(start, 64);
        drive.flashFirmware = drive.serial.substr(0, 32);
        drive.flashConfiguration = drive.serial.substr(32);
        bench.lifeCycle().add(drive);
        drive = bench.drive(drive.serial);
        drive.reportedSerial = drive.runningFirmware = drive.runningConfiguration = everyByte();
        drive.lastUpdate = "failed: caf\xc3\xa9 \xe2\x82\xac \n\"";
        drive.bytesWritten = std::int64_t(1) << 53;
        drive.chipset = std::numeric_limits<std::int32_t>::min();
        bench.store().change([&] { DriveTable(bench.store()).update(drive); });
    }
}

void addChips(TemporaryBench &bench)
{
    bench.addOutdated("FOREIGN", "Pebble");
    FlashChip foreign;
    foreign.load(FirmwareImage::forModel(*findModel("Breakwater"), "9", "9"));
    setChip(bench.store(), "FOREIGN", foreign);
    bench.addOutdated("BLANK", "Pebble");
    setChip(bench.store(), "BLANK", FlashChip());
    bench.addOutdated("BYTES", "Pebble");
    setChip(bench.store(), "BYTES", FlashChip(everyByte()));
    Drive incomplete = newDrive(*findModel("Skiff"));
    incomplete.serial = "INCOMPLETE";
    incomplete.incomplete = incomplete.bootRom = true;
    incomplete.flashFirmware.clear();
    bench.lifeCycle().restore(incomplete, FlashChip());
    incomplete.serial = "HALF";
    bench.lifeCycle().restore(incomplete, foreign);
}

void addHost(TemporaryBench &bench)
{
    bench.host().change([](HostState &state) {
        state.companionInstalled = state.extensionLoaded = true;
        state.extensionVersion = "\xc3\xa9\n";
    });
    bench.host().logCall({"ls", "a b", "\xe2\x82\xac\n"});
    bench.host().restoreCall("");
    bench.host().restoreCall("a\0b"s);
}

} // namespace

void tst_BenchDocument::comesBackAsItWas_data()
{
    QTest::addColumn<Fill>("fill");
    QTest::newRow("empty") << Fill([](TemporaryBench &) {});
    QTest::newRow("sample") << Fill([](TemporaryBench &bench) {
        for (const Drive &drive : sampleDrives()) {
            bench.lifeCycle().add(drive);
        }
        bench.lifeCycle().unplug("TV0005SKIFF");
    });
    QTest::newRow("faults") << Fill(addFaults);
    QTest::newRow("every byte") << Fill(addEveryByte);
    QTest::newRow("chips") << Fill(addChips);
    QTest::newRow("host") << Fill(addHost);
}

void tst_BenchDocument::comesBackAsItWas()
{
    QFETCH(Fill, fill);
    TemporaryBench bench;
    fill(bench);
    const std::string exported = bench.content();
    TemporaryBench other;
    fillBench(other.store(), parseBench(exported, "bench.json"));
    QCOMPARE(other.content(), exported);
    for (const Drive &drive : bench.lifeCycle().drives()) {
        QCOMPARE(other.chip(drive.serial).content(), bench.chip(drive.serial).content());
        QCOMPARE(other.drive(drive.serial).faults.size(), drive.faults.size());
    }
    QCOMPARE(other.host().calls(), bench.host().calls());
}

void tst_BenchDocument::namesEachField()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::FlashError, 4096, true));
    bench.lifeCycle().setFault("A", textFault(FaultKind::Text, "\xe9", "modelName"));
    bench.host().logCall({"ls", "-l"});
    const Json json = Json::parse(bench.content());
    QCOMPARE(json.at("version"), Json(1));
    const Json &drive = json.at("drives").at(0);
    QStringList names;
    for (const auto &member : drive.items()) {
        names += QString::fromStdString(member.key());
    }
    QCOMPARE(names.join(' '),
        QString("serial model chipset plugged answers reportedSerial runningFirmware runningConfiguration "
                "bootRom flashFirmware flashConfiguration incomplete bytesWritten bytesToWrite mounted "
                "flashRate powerUps pluggedAt unpluggedAt queries flashes heartbeat lastUpdate lastUpdateAt "
                "faults"));
    QCOMPARE(drive.at("flashFirmware"), Json("0.9"));
    QCOMPARE(drive.at("plugged"), Json(true));
    QCOMPARE(drive.at("flashRate"), Json(Drive::MaximumFlashRate));
    QCOMPARE(drive.at("faults"), Json::parse(R"([{"fault": "flash-error", "once": true, "value": 4096},
            {"fault": "text", "once": false, "value": "\u00e9", "field": "modelName"}])"));
    QCOMPARE(json.at("host"),
        Json::parse(R"({"companionInstalled": false, "serviceSubmitted": false, "extensionInstalled": false,
            "extensionLoaded": false, "extensionVersion": "1.2.4", "processes": []})"));
    QCOMPARE(json.at("calls"), Json::parse(R"(["ls -l"])"));
    QVERIFY(bench.content().rfind("{\n    \"version\": 1,\n", 0) == 0); // to be read and edited
}

void tst_BenchDocument::holdsAChipThatTheVersionsDoNotTell()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    FlashChip chip = bench.chip("A");
    chip.program(FlashChip::Size - FlashChip::PageSize, "\x12");
    setChip(bench.store(), "A", chip);
    const Json drive = Json::parse(bench.content()).at("drives").at(0);
    const Json &last = drive.at("chip").at("31");
    QCOMPARE(last.get<std::string>(),
        std::string(2 * (FlashChip::SectorSize - FlashChip::PageSize), 'f') + "12"
            + std::string(2 * FlashChip::PageSize - 2, 'f'));
    QVERIFY(!drive.at("chip").contains("29")); // blank
}

void tst_BenchDocument::missingMembersAreThoseOfANewDrive()
{
    const Drive drive = onlyDrive(R"({"version": 1, "drives": [{"serial": "A\u0000", "model": "Skiff"}]})");
    QCOMPARE(drive.serial, "A\0"s);
    QCOMPARE(drive.reportedSerial, "A\0"s);
    QCOMPARE(drive.chipset, std::int64_t(Chipset::Asm1051));
    QCOMPARE(drive.flashFirmware + ' ' + drive.runningFirmware, "2.11 2.11"s);
    QCOMPARE(drive.flashConfiguration + ' ' + drive.runningConfiguration, "4 4"s);
    QCOMPARE(drive.flashRate, Drive::DefaultFlashRate);
    QCOMPARE(drive.state(), DriveState::Ready);
    QVERIFY(drive.mounted && drive.faults.empty());

    const Drive older = onlyDrive(
        R"({"drives": [{"flashFirmware": "1", "flashConfiguration": "2", "model": "Skiff", "serial": "A",
            "reportedSerial": "B", "runningFirmware": "0", "faults": [{"fault": "no-return"}]}],
            "version": 1})");
    QCOMPARE(older.runningFirmware + older.runningConfiguration, "02"s);
    QCOMPARE(older.reportedSerial, "B"s);
    QCOMPARE(faultText(older.faults.at(0)), "no-return"s);
    QCOMPARE(older.state(), DriveState::RestartNeeded);

    // The chip holds what the versions say.
    TemporaryBench bench;
    const char *const text = R"({"version": 1, "drives": [{"serial": "A", "model": "Skiff"},
        {"serial": "B", "model": "Skiff", "incomplete": true}]})";
    fillBench(bench.store(), parseBench(text, "bench.json"));
    QCOMPARE(bench.chip("A").version(FlashChip::Firmware), "2.11"s);
    QCOMPARE(bench.chip("B").content(), FlashChip().content());
}

void tst_BenchDocument::aDocumentWithoutDrivesIsAnEmptyBench()
{
    TemporaryBench empty;
    QCOMPARE(imported(R"({"version": 1})"), empty.content());
    QCOMPARE(imported(R"({"version": 1, "drives": [], "host": {}, "calls": []})"), empty.content());
}

void tst_BenchDocument::processesStayWhereTheyAre()
{
    TemporaryBench bench;
    bench.host().addProcess({::getpid(), "/Library/tarvo_qd_service"});
    const std::string exported = bench.content();
    QCOMPARE(Json::parse(exported).at("host").at("processes"),
        Json({{{"id", ::getpid()}, {"command", "/Library/tarvo_qd_service"}}}));
    TemporaryBench empty;
    QCOMPARE(imported(exported), empty.content());
}

void tst_BenchDocument::aRecordIsWrittenWithItsBytes()
{
    DeviceInfo record;
    record.modelName = everyByte();
    record.vendorId = 0xFFFF;
    record.chipsetType = -1;
    const Json json = toJson(record);
    QCOMPARE(json.size(), std::size_t(12));
    QCOMPARE(json.at("vendorId"), Json(65535));
    QCOMPARE(json.at("chipsetType"), Json(-1));
    const QString name = QString::fromStdString(json.at("modelName").get<std::string>());
    QCOMPARE(name.toLatin1().toStdString(), everyByte());
    QCOMPARE(printed(Json{{"a", 1}}, false), "{\"a\":1}\n"s);
}

void tst_BenchDocument::bytesThatAreNoUtf8AreReplaced()
{
    TemporaryBench bench;
    bench.host().restoreCall("a\xff");
    QCOMPARE(Json::parse(bench.content()).at("calls").at(0), Json("a\xef\xbf\xbd"));
}

static const TestClass<tst_BenchDocument> benchDocumentTests;

#include "tst_BenchDocument.moc"
