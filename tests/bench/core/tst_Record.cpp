#include "bench/core/Record.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

using namespace bench;
using namespace std::string_literals;

/// The record's fields by their names.
class tst_Record : public QObject
{
    Q_OBJECT

private slots:
    void aReportSetsItsField_data();
    void aReportSetsItsField();
    void checksNumbersAgainstTheirField_data();
    void checksNumbersAgainstTheirField();
};

void tst_Record::aReportSetsItsField_data()
{
    QTest::addColumn<std::string>("field");
    QTest::addColumn<bool>("isText");
    for (const QString &field : QString::fromStdString(recordFieldNames()).split(", ")) {
        const bool isText = !QRegularExpression("Id$|Status$|Type$").match(field).hasMatch();
        QTest::newRow(qPrintable(field)) << field.toStdString() << isText;
    }
}

void tst_Record::aReportSetsItsField()
{
    QFETCH(std::string, field);
    QFETCH(bool, isText);
    DeviceInfo record;
    record.modelName = "\xFF";
    Json expected = toJson(record);
    QCOMPARE(int(expected.size()), 12);
    QCOMPARE(expected["modelName"].get<std::string>(), "\u00FF"s);
    expected[field] = isText ? Json("x=\u00E9") : Json(7);
    apply(fault("report " + field + '=' + (isText ? "x=\u00E9" : "7")), &record);
    QCOMPARE(toJson(record).dump(), expected.dump());
}

void tst_Record::checksNumbersAgainstTheirField_data()
{
    QTest::addColumn<std::string>("report");
    QTest::addColumn<std::string>("reason"); // empty where the value is taken
    const auto row = [](const char *text, const char *reason) {
        QTest::newRow(text) << text + ""s << reason + ""s;
    };
    row("productId=0xFFFF", "");
    row("productId=0", "");
    row("productId=65536", "report productId: needs a whole number from 0 to 65535");
    row("vendorId=-1", "report vendorId: needs a whole number from 0 to 65535");
    row("chipsetType=-2147483648", "");
    row("chipsetType=2147483648", "report chipsetType: needs a whole number from -2147483648 to 2147483647");
    row("firmwareStatus=", "report firmwareStatus: needs a whole number from -2147483648 to 2147483647");
    row("modelName=", "");
    row("modelName=\u0100",
        "report modelName: needs a text of characters up to U+00FF, with \\xNN for any byte");
}

void tst_Record::checksNumbersAgainstTheirField()
{
    QFETCH(std::string, report);
    QFETCH(std::string, reason);
    DeviceInfo record;
    QCOMPARE(refusal([&] { apply(fault("report " + report), &record); }), reason);
}

static const TestClass<tst_Record> recordTests;
#include "tst_Record.moc"
