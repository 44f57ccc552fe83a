#include "bench/core/BenchDocument.h"
#include "bench/core/FlashChip.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <filesystem>

using namespace bench;

/// Documents that make no bench: each is refused with the place of what is wrong, and changes nothing.
class tst_MalformedDocument : public QObject
{
    Q_OBJECT

private slots:
    void isNoJson_data();
    void isNoJson();
    void isNotAsItMustBe_data();
    void isNotAsItMustBe();
    void refusesEveryTruncation();
    void nestsAsDeepAsAnyoneLikes();
    void changesNothing();

private:
    static std::string reason(const std::string &text)
    {
        return refusal([&] { parseBench(text, "a/bench.json"); });
    }
};

void tst_MalformedDocument::isNoJson_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("begin");
    QTest::newRow("empty") << ""s
                           << "1:1: syntax error while parsing value - unexpected end of input"s;
    QTest::newRow("end of input") << "{\n"s
                                  << "2:1: syntax error while parsing object key - unexpected end of input"s;
    QTest::newRow("word") << "{\n  \"version\": 1,\n  oops\n}\n"s
                          << "3:3: syntax error while parsing object key - invalid literal"s;
    QTest::newRow("comma") << "{\"version\": 1,}"s
                           << "1:15: syntax error while parsing object key - unexpected '}'"s;
    QTest::newRow("second value") << "{}\n{}"s
                                  << "2:1: syntax error while parsing value - unexpected '{'"s;
    QTest::newRow("newline in a text") << "[\"a\n\"]"s
                                       << "1:4: syntax error while parsing value - invalid string"s;
    QTest::newRow("no UTF-8") << "{\"version\": \"\xff\"}"s
                              << "1:14: syntax error while parsing value - invalid string"s;
    QTest::newRow("no number") << "[1e999]"s
                               << "number overflow parsing '1e999'"s;
}

void tst_MalformedDocument::isNoJson()
{
    QFETCH(std::string, text);
    QFETCH(std::string, begin);
    const std::string found = reason(text);
    QVERIFY2(found.rfind("a/bench.json:" + (begin[0] == 'n' ? " "s : ""s) + begin, 0) == 0, found.c_str());
    QVERIFY2(found.find('\n') == std::string::npos, found.c_str());
    QVERIFY2(found.find("json.exception") == std::string::npos, found.c_str());
}

void tst_MalformedDocument::isNotAsItMustBe_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("reason");
    const auto document = [](const char *name, const std::string &text, const std::string &reason) {
        QTest::newRow(name) << text << reason;
    };
    document("list", "[]", "/: must be an object");
    document("null", "null", "/: must be an object");
    document("no version", "{}", "/version: must be 1");
    document("another version", R"({"version": 2})", "/version: must be 1");
    document("version of another type", R"({"version": "1"})", "/version: must be 1");
    document("unknown member", R"({"version": 1, "drive": []})", "/drive: is not a known member");
    document("member with a newline", R"({"version": 1, "a\nb": []})", "/a\\x0Ab: is not a known member");
    document("drives", R"({"version": 1, "drives": {}})", "/drives: must be a list");
    document("no drives", R"({"version": 1, "drives": null})", "/drives: must be a list");
    document("calls", R"({"version": 1, "calls": "ls"})", "/calls: must be a list of texts");
    document("call", R"({"version": 1, "calls": ["ls", 1]})", "/calls: must be a list of texts");
    document("host", R"({"version": 1, "host": []})", "/host: must be an object");
    document("host, unknown member", R"({"version": 1, "host": {"name": ""}})",
        "/host/name: is not a known member");
    document("host, type of flag", R"({"version": 1, "host": {"extensionLoaded": 1}})",
        "/host/extensionLoaded: must be true or false");
    document("host, type of text", R"({"version": 1, "host": {"extensionVersion": null}})",
        "/host/extensionVersion: must be a text");
    document("drive", R"({"version": 1, "drives": [7]})", "/drives/0: must be an object");
    document("no model", R"({"version": 1, "drives": [{"serial": "A"}]})",
        "/drives/0/model: names no model of the catalogue");
    document("no serial number", R"({"version": 1, "drives": [{"model": "Pebble"}]})",
        "/drives/0: a serial number has 1 to 80 characters, this one 0");
    document("serial number twice",
        R"({"version": 1, "drives": [{"model": "Pebble", "serial": "A"}, {"model": "Skiff", "serial": "A"}]})",
        "/drives/1/serial: is that of another drive");

    const auto drive = [&](const char *name, const std::string &members, const std::string &reason) {
        document(name,
            R"({"version": 1, "drives": [{"model": "Pebble", "serial": "A"}, {"serial": "B", "model": "Skiff", )"
                + members + "}]}",
            "/drives/1" + reason);
    };
    drive("unknown model", R"("model": "Boulder")", "/model: names no model of the catalogue");
    drive("type of a model", R"("model": 1)", "/model: must be a text");
    drive("unknown member of a drive", R"("pluged": true)", "/pluged: is not a known member");
    drive("type of flag", R"("plugged": 1)", "/plugged: must be true or false");
    drive("type of text", R"("runningFirmware": 2.07)", "/runningFirmware: must be a text");
    drive("character", R"("runningFirmware": "\u20ac")",
        "/runningFirmware: must hold characters U+0000 to U+00FF only");
    drive("long serial number", R"("serial": ")" + std::string(81, 'x') + '"',
        ": a serial number has 1 to 80 characters, this one 81");
    drive("long version", R"("flashConfiguration": ")" + std::string(9000, '9') + '"',
        ": invalid drive: a version has at most 32 characters, this one 9000");
    const std::string chipset = "/chipset: must be a whole number from -2147483648 to 2147483647";
    for (const char *value : {"\"1\"", "1.5", "1e3", "1e300", "true", "null", "[]", "2147483648",
             "-2147483649", "9223372036854775807", "9223372036854775808", "18446744073709551615"}) {
        drive(value, "\"chipset\": "s + value, chipset);
    }
    drive("rate of nothing", R"("flashRate": 0)", "/flashRate: must be a whole number from 1 to 1000000000");
    drive("rate above", R"("flashRate": 1000000001)",
        "/flashRate: must be a whole number from 1 to 1000000000");
    drive(
        "negative number", R"("queries": -1)", "/queries: must be a whole number from 0 to 9007199254740992");
    drive("number above", R"("queries": 9007199254740993)",
        "/queries: must be a whole number from 0 to 9007199254740992");

    drive("faults", R"("faults": 1)", "/faults: must be a list");
    const auto fault = [&](const char *name, const std::string &members, const std::string &reason) {
        drive(name, R"("faults": [{"fault": "no-return"}, {)" + members + "}]", "/faults/1" + reason);
    };
    drive("type of a fault", R"("faults": ["no-return"])", "/faults/0: must be an object");
    fault("no fault", "", "/fault: names no known fault");
    fault("unknown fault", R"("fault": "smoke")", "/fault: names no known fault");
    fault("unknown member of a fault", R"("fault": "no-return", "one": true)", "/one: is not a known member");
    fault("type of once", R"("fault": "no-return", "once": 1)", "/once: must be true or false");
    fault(
        "value of a fault without", R"("fault": "no-return", "value": "1")", "/value: is not a known member");
    fault("type of a number", R"("fault": "flash-error", "value": "1")",
        "/value: must be a whole number from 0 to 2147483647");
    fault("number of a fault", R"("fault": "flash-error", "value": -4096)",
        "/value: must be a whole number from 0 to 2147483647");
    fault("type of a fault's text", R"("fault": "new-serial", "value": 1)", "/value: must be a text");
    fault("no text", R"("fault": "new-serial")",
        ": new-serial needs a text of characters up to U+00FF, with \\xNN for any byte");
    fault("character of a text", R"("fault": "new-serial", "value": "\u0100")",
        "/value: must hold characters U+0000 to U+00FF only");
    const std::string field = "/field: must be one of " + recordFieldNames();
    fault("unknown field", R"("fault": "text", "field": "colour", "value": "x")", field);
    fault("no field", R"("fault": "text", "value": "x")", field);
    fault("type of a field", R"("fault": "text", "field": 1, "value": "x")", "/field: must be a text");
    fault("field of another fault", R"("fault": "chipset", "value": 1, "field": "modelName")",
        "/field: is not a known member");

    drive("chip", R"("chip": [])", "/chip: must be an object");
    const std::string digits(2 * FlashChip::SectorSize, '0');
    const auto sector = [&](const char *key, const std::string &value, const std::string &reason) {
        drive(("sector "s + key).c_str(), R"("chip": {")"s + key + "\": " + value + '}', "/chip/" + reason);
    };
    for (const char *key : {"32", "-1", "x", "", "1.0", "0x1", "01"}) {
        sector(key, '"' + digits + '"', key + ": is no sector from 0 to 31"s);
    }
    sector("a\\nb", "1", "a\\x0Ab: is no sector from 0 to 31");
    sector("0", "1", "0: must be 8192 hexadecimal digits");
    sector("1", "\"00\"", "1: must be 8192 hexadecimal digits");
    sector("2", '"' + digits.substr(2) + "0G\"", "2: must be 8192 hexadecimal digits");
    sector("3", '"' + digits + "00\"", "3: must be 8192 hexadecimal digits");
}

void tst_MalformedDocument::isNotAsItMustBe()
{
    QFETCH(std::string, text);
    QFETCH(std::string, reason);
    QCOMPARE(this->reason(text), "a/bench.json: " + reason);
}

void tst_MalformedDocument::refusesEveryTruncation()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", textFault(FaultKind::Text, "\xff", "modelName"));
    const std::string text = bench.content();
    for (std::size_t length = 0; length + 1 < text.size(); ++length) {
        const std::string found = reason(text.substr(0, length));
        QVERIFY2(QRegularExpression("^a/bench.json:[0-9]+:[0-9]+: [^\n]+$")
                     .match(QString::fromStdString(found))
                     .hasMatch(),
            found.c_str());
    }
    QCOMPARE(reason(text.substr(0, text.size() - 1)), ""s); // but for the last newline
}

void tst_MalformedDocument::nestsAsDeepAsAnyoneLikes()
{
    const std::string deep = std::string(200000, '[') + std::string(200000, ']');
    QCOMPARE(reason(deep), "a/bench.json: /: must be an object"s);
    QCOMPARE(reason(R"({"version": )" + deep + "}"), "a/bench.json: /version: must be 1"s);
    for (const char *member : {"drives", "calls", "host"}) {
        QVERIFY2(!reason(R"({"version": 1, ")"s + member + "\": " + deep + "}").empty(), member);
    }
    QVERIFY(
        !reason(R"({"version": 1, "drives": [{"model": "Pebble", "serial": "A", "faults": )" + deep + "}]}")
             .empty());
}

void tst_MalformedDocument::changesNothing()
{
    const char *const text = R"({"version": 1, "drives": [{"model": "Pebble", "serial": "NEW"}, {}]})";
    const auto create = [&](const std::string &directory) {
        return refusal([&] {
            BenchStore::create(directory, true,
                [&](BenchStore &store) { fillBench(store, parseBench(text, "bench.json")); });
        });
    };
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    QCOMPARE(create(bench.directory()), "bench.json: /drives/1/model: names no model of the catalogue"s);
    QCOMPARE(bench.content(), before);
    QVERIFY(!create(bench.imageDirectory() + "/new").empty());
    QVERIFY(!std::filesystem::exists(bench.imageDirectory() + "/new"));

    // Nor does a document that holds a drive of a bench that is there already.
    const char *const taken = R"({"version": 1, "drives": [{"model": "Pebble", "serial": "0"},
        {"model": "Pebble", "serial": "A"}]})";
    QVERIFY(!refusal([&] {
        bench.store().change([&] { fillBench(bench.store(), parseBench(taken, "bench.json")); });
    }).empty());
    QCOMPARE(bench.content(), before);
}

static const TestClass<tst_MalformedDocument> malformedDocumentTests;

#include "tst_MalformedDocument.moc"
