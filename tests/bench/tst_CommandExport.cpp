#include "bench/core/Files.h"
#include "bench/core/Refused.h"
#include "tests/bench/Flashing.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

using namespace bench;

/// A bench as a JSON file: drive-bench export and drive-bench init --from.
class tst_CommandExport : public QObject
{
    Q_OBJECT

private slots:
    void comesBackAsItWas();
    void replacesABenchWithForceOnly();
    void takesWhatAPersonWrote();
    void namesWhatIsMalformed_data();
    void namesWhatIsMalformed();
    void refusesWhatCannotBeRead_data();
    void refusesWhatCannotBeRead();
};

namespace {

/// A directory with an empty bench and the JSON of another one.
class Files
{
public:
    explicit Files(const std::string &json)
    {
        writeFile(path("bench.json"), json);
        BenchStore::create(path("bench"), false, [](BenchStore &) {});
    }
    std::string path(const QString &name) const { return directory.filePath(name).toStdString(); }
    Ended init(const QString &bench, const QStringList &options = {}) const
    {
        return driveBench(QStringList{"init", "--bench", directory.filePath(bench), "--from",
                              directory.filePath("bench.json")}
            + options);
    }

private:
    QTemporaryDir directory;
};

} // namespace

void tst_CommandExport::comesBackAsItWas()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated(std::string("\xe9\0 \n", 4), "Harbour FireWire", 99);
    bench.lifeCycle().setFault("A", numberFault(FaultKind::FlashError, 500, true));
    QVERIFY(!flash(bench).empty());
    for (const FaultDescription &kind : faultDescriptions()) {
        Fault fault{kind.kind};
        fault.number = kind.maximum;
        fault.text = kind.takesText() || kind.value == FaultValue::Field ? std::string("x\0\xff", 3) : "";
        fault.field = kind.value == FaultValue::Field ? findRecordField("modelName") : nullptr;
        bench.lifeCycle().setFault("A", fault);
    }
    bench.host().change([](HostState &host) {
        host.companionInstalled = true;
        host.extensionVersion = "9.9";
    });
    bench.host().logCall({"open", "a b", "it's"});
    const Ended exported = driveBench("export", bench.directory());
    QCOMPARE(exported.status, 0);
    QCOMPARE(exported.errors, QByteArray());

    const Files files(exported.output.toStdString());
    const Ended ended = files.init("new");
    QCOMPARE(ended.errors, QByteArray());
    QCOMPARE(ended.output.toStdString(), files.path("new") + ": a bench with 2 drives\n");
    QCOMPARE(driveBench("export", files.path("new")).output, exported.output);
    // The incomplete chip is the same byte by byte.
    BenchStore store(files.path("new"));
    const Drive drive = DriveLifeCycle(store).drive("A");
    QVERIFY(DriveTable(store).chip(drive).content() == chip(bench).content());
}

void tst_CommandExport::replacesABenchWithForceOnly()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Files files(bench.content());
    const QByteArray empty = driveBench("export", files.path("bench")).output;
    const Ended refused = files.init("bench");
    QCOMPARE(refused.status, 1);
    QVERIFY2(refused.errors.endsWith("/bench is a bench already; to make it anew, add --force\n"),
        refused.errors.constData());
    QCOMPARE(driveBench("export", files.path("bench")).output, empty);
    QCOMPARE(files.init("bench", {"--force"}).status, 0);
    QCOMPARE(driveBench("export", files.path("bench")).output.toStdString(), bench.content());
}

void tst_CommandExport::takesWhatAPersonWrote()
{
    const Files files(R"({"version": 1, "drives": [
        {"model": "Pebble", "serial": "A"},
        {"model": "Pebble", "serial": "B\u00e9", "flashFirmware": "2.00", "plugged": false,
         "faults": [{"fault": "no-return"}]}]})");
    QCOMPARE(files.init("bench", {"--force"}).errors, QByteArray());
    BenchStore store(files.path("bench"));
    const std::vector<Drive> drives = DriveLifeCycle(store).drives();
    QCOMPARE(drives.size(), std::size_t(2));
    QCOMPARE(drives[0].state(), DriveState::Ready);
    QCOMPARE(drives[0].runningFirmware, std::string(findModel("Pebble")->newestFirmware));
    QCOMPARE(drives[1].reportedSerial, std::string("B\xe9"));
    QCOMPARE(drives[1].state(), DriveState::Unplugged);
    QCOMPARE(drives[1].faults.size(), std::size_t(1));
    // A drive that was written down with its versions alone has a chip that holds them.
    DriveLifeCycle(store).clearFaults("B\xe9");
    DriveLifeCycle(store).plug("B\xe9");
    QCOMPARE(DriveLifeCycle(store).drive("B\xe9").runningFirmware, std::string("2.00"));
}

void tst_CommandExport::namesWhatIsMalformed_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("where");
    const auto row = [](const char *name, const QByteArray &json, const char *where) {
        QTest::newRow(name) << json << QString(where);
    };
    const auto drive = [](const QByteArray &members) {
        return "{\"version\": 1, \"drives\": [{\"model\": \"Pebble\", \"serial\": \"A\"}, {" + members
            + "}]}";
    };
    row("nothing", "", ":1:1: ");
    row("missing comma", "{\n    \"version\": 1\n    \"drives\": []\n}\n", ":3:12: ");
    row("unfinished", "{\"version\": 1,\n\"drives\": [", ":2:12: ");
    row("no UTF-8", "{\"version\": 1, \"x\": \"\xff\"}", ":1:22: ");
    row("more behind it", "{\"version\": 1}\n  x", ":2:3: ");
    row("no object", "[]", ": /: must be an object");
    row("no version", "{}", ": /version: must be 1");
    row("newer version", "{\"version\": 2}", ": /version: must be 1");
    row("unknown member", "{\"version\": 1, \"drive\": []}", ": /drive: is not a known member");
    row("drives that are no list", "{\"version\": 1, \"drives\": {}}", ": /drives: must be a list");
    row("drive that is no object", "{\"version\": 1, \"drives\": [3]}", ": /drives/0: must be an object");
    row("drive without a model", drive("\"serial\": \"B\""), ": /drives/1/model: names no model");
    row("model that is no text", drive("\"serial\": \"B\", \"model\": 5"),
        ": /drives/1/model: must be a text");
    row("drive without a serial number", drive("\"model\": \"Pebble\""),
        ": /drives/1: a serial number has 1 to 80 characters, this one 0");
    row("serial number taken", drive("\"model\": \"Pebble\", \"serial\": \"A\""),
        ": /drives/1/serial: is that of another drive");
    const QByteArray b = "\"model\": \"Pebble\", \"serial\": \"B\", ";
    row("member of a drive", drive(b + "\"colour\": 1"), ": /drives/1/colour: is not a known member");
    row("number", drive(b + "\"flashRate\": 0"), ": /drives/1/flashRate: must be a whole number from 1 to");
    row("broken number", drive(b + "\"flashRate\": 1.5"),
        ": /drives/1/flashRate: must be a whole number from 1");
    row("large number", drive(b + "\"chipset\": 99999999999"), ": /drives/1/chipset: must be a whole number");
    row("truth value", drive(b + "\"plugged\": 1"), ": /drives/1/plugged: must be true or false");
    row("text", drive(b + "\"lastUpdate\": 1"), ": /drives/1/lastUpdate: must be a text");
    row("character that is no byte", drive(b + "\"flashFirmware\": \"\xe2\x82\xac\""),
        ": /drives/1/flashFirmware: must hold characters U+0000 to U+00FF only");
    row("faults", drive(b + "\"faults\": {}"), ": /drives/1/faults: must be a list");
    row("fault", drive(b + "\"faults\": [{\"fault\": \"no-return\"}, {\"fault\": \"smoke\"}]"),
        ": /drives/1/faults/1/fault: names no known fault");
    row("value of a fault", drive(b + "\"faults\": [{\"fault\": \"no-return\", \"value\": \"1\"}]"),
        ": /drives/1/faults/0/value: is not a known member");
    row("number of a fault", drive(b + "\"faults\": [{\"fault\": \"slow-probe\", \"value\": -1}]"),
        ": /drives/1/faults/0/value: must be a whole number from 0 to 60000");
    row("sector", drive(b + "\"chip\": {\"32\": \"\"}"), ": /drives/1/chip/32: is no sector from 0 to 31");
    row("content of a sector", drive(b + "\"chip\": {\"0\": \"ff\"}"),
        ": /drives/1/chip/0: must be 8192 hexadecimal digits");
    row("host", "{\"version\": 1, \"host\": []}", ": /host: must be an object");
    row("member of the host", "{\"version\": 1, \"host\": {\"cpu\": 1}}",
        ": /host/cpu: is not a known member");
    row("truth value of the host", "{\"version\": 1, \"host\": {\"extensionLoaded\": 0}}",
        ": /host/extensionLoaded: must be true or false");
    row("calls", "{\"version\": 1, \"calls\": [1]}", ": /calls: must be a list of texts");
}

void tst_CommandExport::namesWhatIsMalformed()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, where);
    const Files files(json.toStdString());
    const QByteArray before = driveBench("export", files.path("bench")).output;
    for (const char *bench : {"bench", "new"}) {
        const Ended ended = files.init(bench, {"--force"});
        QCOMPARE(ended.status, 1);
        const std::string start = "drive-bench: " + files.path("bench.json") + where.toStdString();
        QVERIFY2(ended.errors.startsWith(start.c_str()), ended.errors.constData());
        QCOMPARE(ended.errors.count('\n'), 1);
    }
    QCOMPARE(driveBench("export", files.path("bench")).output, before);
    QVERIFY(!QFile::exists(QString::fromStdString(files.path("new"))));
}

void tst_CommandExport::refusesWhatCannotBeRead_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no file") << "/nowhere"
                             << "cannot read /nowhere: No such file or directory";
    QTest::newRow("directory") << "/"
                               << "cannot read /: is a directory";
    QTest::newRow("device") << "/dev/zero"
                            << "cannot read /dev/zero: is not a regular file";
}

void tst_CommandExport::refusesWhatCannotBeRead()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    const Ended ended = driveBench({"init", "--force", "--from", file}, bench.directory());
    QCOMPARE(ended.status, 1);
    QCOMPARE(ended.errors, ("drive-bench: " + reason + '\n').toUtf8());
    QCOMPARE(bench.content(), before);
}

static const TestClass<tst_CommandExport> commandExportTests;
#include "tst_CommandExport.moc"
