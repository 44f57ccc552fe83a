// SPDX-License-Identifier: MIT
#include "bench/core/Drive.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

using namespace bench;
using namespace std::string_literals;

/// A drive as a value: its state, its texts, its document and the limits of that.
class tst_Drive : public QObject
{
    Q_OBJECT

private slots:
    void hasAState();
    void isWrittenAsLongAsItsWriterIsSeen_data();
    void isWrittenAsLongAsItsWriterIsSeen();
    void saysHowTheLastUpdateEnded();
    void theSamplesAreOneOfEachKind();
    void aDocumentComesBackAsItIs();
    void whatIsLeftOutIsThatOfANewDrive();
    void refusesADocument_data();
    void refusesADocument();
    void takesValuesUpToTheirLimits();
    void aCounterBeginsAgain();
};

void tst_Drive::hasAState()
{
    const std::pair<const char *, const char *> states[] = {{R"({})", "ready"},
        {R"({"plugged": false, "incomplete": true})", "unplugged"},
        {R"({"answers": false, "incomplete": true})", "does not answer"},
        {R"({"incomplete": true})", "boot ROM"}, {R"({"runningFirmware": "0"})", "restart needed"},
        {R"({"runningConfiguration": "0"})", "restart needed"}};
    for (const auto &[members, state] : states) {
        Json json = drive("A");
        json.update(Json::parse(members));
        const Drive drive = driveFromJson(json);
        QCOMPARE(stateText(drive.state()), state);
        QCOMPARE(drive.progressText(), state + ""s);
        QVERIFY(!drive.isInterrupted());
    }
}

void tst_Drive::isWrittenAsLongAsItsWriterIsSeen_data()
{
    QTest::addColumn<qint64>("age"); // of the heartbeat in milliseconds
    QTest::addColumn<bool>("isWritten");
    addRow("just now", qint64(0), true);
    addRow("lately", qint64(500), true);
    addRow("more than a second ago", qint64(1500), false);
    // A clock was set back since, which must not keep the drive from being flashed.
    addRow("in the future", qint64(-60000), false);
}

void tst_Drive::isWrittenAsLongAsItsWriterIsSeen()
{
    QFETCH(qint64, age);
    QFETCH(bool, isWritten);
    Drive drive = ::drive("A");
    drive.incomplete = true;
    drive.bytesWritten = 2999;
    drive.bytesToWrite = 10000;
    drive.heartbeat = now() - age;
    QCOMPARE(drive.progressText(), isWritten ? "being written 29%"s : "boot ROM"s);
    QCOMPARE(drive.isInterrupted(), !isWritten);
    QCOMPARE(drive.lastUpdateText().substr(0, 15), isWritten ? ""s : "interrupted, at"s);
    drive.bytesToWrite = 0;
    QCOMPARE(drive.progressText(), isWritten ? "being written"s : "boot ROM"s);
    drive.plugged = false;
    QVERIFY(drive.isInterrupted());
}

void tst_Drive::saysHowTheLastUpdateEnded()
{
    Drive drive = ::drive("A");
    QCOMPARE(drive.lastUpdateText(), ""s);
    const QString before = QTime::currentTime().toString("hh:mm");
    drive.setLastUpdate("failed: \x1B[2J\u009B\u00E9");
    const QString after = QTime::currentTime().toString("hh:mm");
    const QString text = QString::fromStdString(drive.lastUpdateText());
    const QString beginning = QString::fromUtf8("failed: \\x1B[2J\\x9B\u00E9, at ");
    QVERIFY2(text == beginning + before || text == beginning + after, qPrintable(text));
}

void tst_Drive::theSamplesAreOneOfEachKind()
{
    QStringList found;
    for (const Drive &drive : sampleDrives()) {
        const Model &model = drive.catalogueModel();
        const bool isSupported = drive.chipset == model.chipset;
        found << QString("%1 %2%3%4")
                     .arg(isSupported ? restartText(model.restart()) : "no updater", model.busName(),
                         drive.flashFirmware != model.newestFirmware ? " firmware" : "",
                         drive.flashConfiguration != model.newestConfiguration ? " configuration" : "");
    }
    QCOMPARE(found,
        QStringList({"unplug USB firmware configuration", "power button USB firmware",
            "unplug USB configuration", "not needed FireWire firmware configuration", "unplug USB",
            "no updater USB firmware configuration"}));
}

void tst_Drive::aDocumentComesBackAsItIs()
{
    Drive drive = ::drive("\u00E9\n", "Harbour");
    drive.lastUpdate = "any text: \u65E5";
    drive.powerUps = std::int64_t(1) << 53;
    drive.faults = {fault("report modelName=\\xFF", true), fault("unmount-returns -2")};
    const Json json = drive;
    QCOMPARE(Json(driveFromJson(json)).dump(), json.dump());
}

void tst_Drive::whatIsLeftOutIsThatOfANewDrive()
{
    const Drive drive = driveFromJson(
        {{"serial", "A"}, {"model", "Harbour"}, {"flashFirmware", "1"}, {"flashConfiguration", "2"}});
    Drive expected = ::drive("A", "Harbour");
    expected.flashFirmware = expected.runningFirmware = "1";
    expected.flashConfiguration = expected.runningConfiguration = "2";
    QCOMPARE(Json(drive).dump(), Json(expected).dump());
}

void tst_Drive::refusesADocument_data()
{
    QTest::addColumn<std::string>("members"); // beside the serial number "A" and the model "Pebble"
    QTest::addColumn<std::string>("reason");
    const auto row = [](const char *members, const char *reason) {
        addRow(members, ", "s + members, reason + ""s);
    };
    row(R"("colour": 1)", "/x/colour: is not a known member");
    row(R"("plugged": 1)", "/x/plugged: must be true or false");
    row(R"("queries": true)", "/x/queries: must be a whole number");
    row(R"("queries": 1.0)", "/x/queries: must be a whole number");
    row(R"("queries": -1)", "/x/queries: must be a whole number from 0 to 9007199254740992");
    row(R"("heartbeat": 9007199254740993)",
        "/x/heartbeat: must be a whole number from 0 to 9007199254740992");
    row(R"("heartbeat": 18446744073709551615)", "/x/heartbeat: must be a whole number");
    row(R"("flashRate": 0)", "/x/flashRate: must be a whole number from 1 to 1000000000");
    row(R"("flashRate": 1000000001)", "/x/flashRate: must be a whole number from 1 to 1000000000");
    row(R"("chipset": 2147483648)", "/x/chipset: must be a whole number from -2147483648 to 2147483647");
    row(R"("lastUpdate": null)", "/x/lastUpdate: must be a text");
    row(R"("faults": {})", "/x/faults: must be a list");
    row(R"("faults": [1])", "/x/faults/0: must be an object");
    row(R"("faults": [{}, {"once": 1}])", "/x/faults/1/once: must be true or false");
    row(R"("faults": [{"fault": "smoke"}])", "/x/faults: there is no fault \"smoke\"");
    row(R"("faults": [{"fault": "no-return", "value": "1"}])", "/x/faults: no-return takes no value");
    row(R"("reportedSerial": "")", "/x/reportedSerial: must have 1 to 80 characters, none above U+00FF");
    row(R"("flashFirmware": "\u0100")", "/x/flashFirmware: must have 0 to 32 characters, none above");
    row(R"("runningConfiguration": "123456789012345678901234567890123")",
        "/x/runningConfiguration: must have 0 to 32 characters");
    addRow("serial", R"(, "serial": ")" + std::string(81, 'x') + '"',
        "/x/serial: must have 1 to 80 characters, none above U+00FF"s);
    addRow("no serial", R"(, "serial": "")"s, "/x/serial: must have 1 to 80 characters"s);
    addRow("model", R"(, "model": "pebble")"s, "/x/model: there is no model \"pebble\""s);
}

void tst_Drive::refusesADocument()
{
    QFETCH(std::string, members);
    QFETCH(std::string, reason);
    const Json json = Json::parse(R"({"serial": "A", "model": "Pebble")" + members + '}');
    // Nothing but what is given, and everything that a drive has: the two take different ways.
    Json whole = drive("A");
    whole.update(json);
    for (const Json &document : {json, whole}) {
        const std::string refused = refusal([&] { driveFromJson(document, "/x"); });
        QCOMPARE(refused.substr(0, reason.size()), reason);
    }
}

void tst_Drive::takesValuesUpToTheirLimits()
{
    const std::pair<const char *, Json> values[] = {{"heartbeat", std::int64_t(1) << 53}, {"bytesWritten", 0},
        {"flashRate", 1}, {"flashRate", 1000000000}, {"chipset", -2147483647 - 1}, {"chipset", 2147483647},
        {"serial", std::string(80, 'x')}, {"flashFirmware", QString(32, QChar(0xFF)).toStdString()},
        {"flashFirmware", ""}};
    for (const auto &[member, value] : values) {
        Json json = drive("A");
        json[member] = value;
        QCOMPARE(Json(driveFromJson(json)).dump(), json.dump());
    }
}

void tst_Drive::aCounterBeginsAgain()
{
    std::int64_t counter = (std::int64_t(1) << 53) - 1;
    count(&counter);
    QCOMPARE(counter, std::int64_t(1) << 53);
    count(&counter);
    QCOMPARE(counter, std::int64_t(0));
}

static const TestClass<tst_Drive> driveTests;
#include "tst_Drive.moc"
