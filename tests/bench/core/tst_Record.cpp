// SPDX-License-Identifier: MIT
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
    void aReportSetsItsField();
    void checksNumbersAgainstTheirField();
};

void tst_Record::aReportSetsItsField()
{
    const QStringList fields = QString::fromStdString(recordFieldNames()).split(", ");
    QCOMPARE(int(fields.size()), 12);
    for (const QString &name : fields) {
        const bool isText = !QRegularExpression("Id$|Status$|Type$").match(name).hasMatch();
        DeviceInfo record;
        record.modelName = "\xFF";
        Json expected = toJson(record);
        QCOMPARE(expected["modelName"].get<std::string>(), "\u00FF"s);
        const std::string field = name.toStdString();
        expected[field] = isText ? Json("x=\u00E9") : Json(7);
        apply(fault("report " + field + '=' + (isText ? "x=\u00E9" : "7")), &record);
        QCOMPARE(toJson(record).dump(), expected.dump());
    }
}

void tst_Record::checksNumbersAgainstTheirField()
{
    const std::pair<const char *, const char *> reasons[] = {{"productId=0xFFFF", ""}, {"productId=0", ""},
        {"productId=65536", "report productId: needs a whole number from 0 to 65535"},
        {"vendorId=-1", "report vendorId: needs a whole number from 0 to 65535"},
        {"chipsetType=-2147483648", ""},
        {"chipsetType=2147483648", "report chipsetType: needs a whole number from -2147483648 to 2147483647"},
        {"firmwareStatus=", "report firmwareStatus: needs a whole number from -2147483648 to 2147483647"},
        {"modelName=", ""},
        {"modelName=\u0100",
            "report modelName: needs a text of characters up to U+00FF, with \\xNN for any byte"}};
    for (const auto &[report, reason] : reasons) {
        DeviceInfo record;
        QCOMPARE(refusal([&, text = report] { apply(fault("report "s + text), &record); }), reason + ""s);
    }
}

static const TestClass<tst_Record> recordTests;
#include "tst_Record.moc"
