// SPDX-License-Identifier: MIT
#include "bench/core/BenchDocument.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

using namespace bench;
using namespace std::string_literals;

/// A bench as JSON: what is exported is read, anything else is refused where it is wrong.
class tst_BenchDocument : public QObject
{
    Q_OBJECT

private slots:
    void whatIsExportedIsRead();
    void nothingInItIsNeededButTheVersion();
    void refusesADocument_data();
    void refusesADocument();
    void refusesTooMuch();
    void refusesManyMembersAtOnce_data();
    void refusesManyMembersAtOnce();
    void isPrintedInAscii();
};

void tst_BenchDocument::whatIsExportedIsRead()
{
    TemporaryBench bench;
    bench.addOutdated("\u00E9\n");
    bench.addOutdated("B", "Harbour FireWire");
    bench.setFault("B", "report modelName=\\xFF", true);
    setCompanionInstalled(bench.store(), true);
    TemporaryBench other;
    fillBench(other.store(), parseBench(bench.content(), "x"));
    QCOMPARE(other.content(), bench.content());
    QVERIFY(isCompanionInstalled(other.store()));
}

void tst_BenchDocument::nothingInItIsNeededButTheVersion()
{
    QVERIFY(parseBench(R"({"version": 2})", "x").drives.empty());
    const BenchDocument document =
        parseBench(R"({"version": 2, "drives": [{"serial": "A", "model": "Skiff"}]})", "x");
    QCOMPARE(Json(document.drives.at(0)).dump(), Json(drive("A", "Skiff")).dump());
    QVERIFY(!document.host.companionInstalled);
}

void tst_BenchDocument::refusesADocument_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("reason"); // its beginning
    const auto row = [](const std::string &text, const char *reason) {
        addRow(text.substr(0, 90).c_str(), text, reason + ""s);
    };
    row("", "x:1:1: syntax error");
    row("{\n  \"a\": ,\n}", "x:2:8: syntax error");
    row("{\"a\": \"\xFF\"}", "x:1:8: syntax error");
    row("{\"version\": 1e999}", "x: number overflow parsing '1e999'");
    row("[]", "x: : must be an object");
    row("{}", "x: /version: must be 2");
    row(R"({"version": 3})", "x: /version: must be 2");
    row(R"({"version": 2, "colour": 1})", "x: /colour: is not a known member");
    row(R"({"version": 2, "drives": {}})", "x: /drives: must be a list");
    row(R"({"version": 2, "host": {"companionInstalled": 1}})",
        "x: /host/companionInstalled: must be true or false");
    row(R"({"version": 2, "drives": [1]})", "x: /drives/0: must be an object");
    row(R"({"version": 2, "drives": [{"serial": "A"}]})", "x: /drives/0/model: there is no model \"\"");
    row(R"({"version": 2, "drives": [{"model": "Skiff"}]})", "x: /drives/0/serial: must have 1 to 80");
    const std::string skiff = R"({"serial": "A", "model": "Skiff"})";
    row(R"({"version": 2, "drives": [)" + skiff + ", " + skiff + "]}",
        "x: /drives/1/serial: is that of another drive");
}

void tst_BenchDocument::refusesADocument()
{
    QFETCH(std::string, text);
    QFETCH(std::string, reason);
    const std::string refused = refusal([&] { parseBench(text, "x"); });
    QCOMPARE(refused.substr(0, reason.size()), reason);
    QVERIFY(!contains(refused, "\n"));
}

void tst_BenchDocument::refusesTooMuch()
{
    QCOMPARE(refusal([] { parseBench(std::string(BenchDocument::MaximumSize + 1, ' '), "x"); }),
        "x: is too large; a bench has at most 16777216 bytes"s);
    std::string drives = "{}";
    for (std::size_t i = 0; i < BenchDocument::MaximumDrives; ++i) {
        drives += ",{}";
    }
    QCOMPARE(refusal([&] { parseBench(R"({"version": 2, "drives": [)" + drives + "]}", "x"); }),
        "x: /drives: has 10001 drives; at most 10000 fit on a bench"s);
}

void tst_BenchDocument::refusesManyMembersAtOnce_data()
{
    QTest::addColumn<QString>("member"); // %1 is its number
    addRow("of the bench", R"("m%1": 1)");
    addRow("of a drive", R"("m%1": 1)");
    addRow("of the same name", R"("colour": %1)");
}

/// What once took time by the square of their number.
void tst_BenchDocument::refusesManyMembersAtOnce()
{
    QFETCH(QString, member);
    QStringList members;
    for (int i = 0; i < 80000; ++i) {
        members << member.arg(i);
    }
    QElapsedTimer clock;
    clock.start();
    QString text = "{" + members.join(',') + "}";
    if (QTest::currentDataTag() == QString("of a drive")) {
        text = "{\"version\": 2, \"drives\": [" + text + "]}";
    }
    const std::string refused = refusal([&] { parseBench(text.toStdString(), "x"); });
    QVERIFY2(contains(refused, "is not a known member"), refused.c_str());
    QVERIFY2(clock.elapsed() < 15000, qPrintable(QString::number(clock.elapsed())));
}

void tst_BenchDocument::isPrintedInAscii()
{
    QCOMPARE(printed({{"a", "\x1B\u009B\u00E9\U0001F600\xFF"}}),
        "{\n    \"a\": \"\\u001b\\u009b\\u00e9\\ud83d\\ude00\\ufffd\"\n}\n"s);
}

static const TestClass<tst_BenchDocument> benchDocumentTests;
#include "tst_BenchDocument.moc"
