#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

/// The values that each kind of fault takes.
class tst_FaultValues : public QObject
{
    Q_OBJECT

private slots:
    void parsesEachKind_data();
    void parsesEachKind();
    void refusesValues_data();
    void refusesValues();
    void checksWhatNoPersonTyped_data();
    void checksWhatNoPersonTyped();
};

namespace {

const FaultDescription &kindOf(const std::string &name)
{
    return *findFault(name);
}

} // namespace

void tst_FaultValues::parsesEachKind_data()
{
    QTest::addColumn<std::string>("name");
    QTest::addColumn<std::string>("value");
    QTest::addColumn<std::string>("text");
    const auto row = [](const char *name, const char *value, const std::string &text) {
        QTest::newRow((name + " "s + value).c_str()) << std::string(name) << std::string(value) << text;
    };
    row("slow-probe", "0", "slow-probe 0");
    row("slow-probe", "60000", "slow-probe 60000");
    row("settle-queries", "2147483647", "settle-queries 2147483647");
    row("settle-time", "0x7FFFFFFF", "settle-time 2147483647");
    row("never-settles", "", "never-settles");
    row("flash-error", "0", "flash-error 0");
    row("flash-error", "2147483647", "flash-error 2147483647");
    row("verify-error", "", "verify-error");
    row("pulled-out", "0", "pulled-out 0");
    row("pulled-out", "2147483647", "pulled-out 2147483647");
    row("wrong-image", "", "wrong-image");
    row("truncated-image", "", "truncated-image");
    row("truncated-image", "1", "truncated-image 1");
    row("truncated-image", "2147483647", "truncated-image 2147483647");
    row("unmount-returns", "-2147483648", "unmount-returns -2147483648");
    row("unmount-returns", "2147483647", "unmount-returns 2147483647");
    row("no-return", "", "no-return");
    row("new-serial", "TV\\xE9\\x00", "new-serial TV\\xE9\\x00");
    row("duplicate-serial", "", "duplicate-serial");
    row("duplicate-serial", "B", "duplicate-serial B");
    row("firmware-status", "-2147483648", "firmware-status -2147483648");
    row("configuration-status", "2147483647", "configuration-status 2147483647");
    row("chipset", "-1", "chipset -1");
    row("vendor-id", "0", "vendor-id 0");
    row("vendor-id", "0xFFFF", "vendor-id 65535");
    row("product-id", "65535", "product-id 65535");
    row("text", "modelName=", "text modelName=");
    row("text", "serialNumber=a=b\\x5C", "text serialNumber=a=b\\x5C");
}

void tst_FaultValues::parsesEachKind()
{
    QFETCH(std::string, name);
    QFETCH(std::string, value);
    QFETCH(std::string, text);
    const std::optional<std::string> given = value.empty() ? std::nullopt : std::optional(value);
    Fault fault = parseFault(kindOf(name), given);
    QCOMPARE(fault.kind, kindOf(name).kind);
    QCOMPARE(faultText(fault), text);
    QVERIFY(!fault.once);
    fault.once = true;
    QCOMPARE(faultText(fault), text + " (once)");
    check(fault); // what was parsed can be stored
}

void tst_FaultValues::refusesValues_data()
{
    QTest::addColumn<std::string>("name");
    QTest::addColumn<std::string>("value");
    QTest::addColumn<std::string>("reason");
    const auto row = [](const char *name, const char *value, const char *reason) {
        QTest::newRow((name + " "s + value).c_str())
            << std::string(name) << std::string(value) << std::string(reason);
    };
    row("slow-probe", "", "slow-probe needs a value, MILLISECONDS");
    row("slow-probe", "-1", "slow-probe needs a whole number from 0 to 60000");
    row("slow-probe", "60001", "slow-probe needs a whole number from 0 to 60000");
    row("slow-probe", "soon", "slow-probe needs a whole number from 0 to 60000");
    row("settle-queries", "2147483648", "settle-queries needs a whole number from 0 to 2147483647");
    row("settle-time", "-1", "settle-time needs a whole number from 0 to 2147483647");
    row("flash-error", "1.5", "flash-error needs a whole number from 0 to 2147483647");
    row("pulled-out", "-1", "pulled-out needs a whole number from 0 to 2147483647");
    row("never-settles", "1", "never-settles takes no value");
    row("verify-error", "x", "verify-error takes no value");
    row("wrong-image", "x", "wrong-image takes no value");
    row("no-return", "1", "no-return takes no value");
    row("truncated-image", "0", "truncated-image needs a whole number from 1 to 2147483647");
    row("unmount-returns", "-2147483649",
        "unmount-returns needs a whole number from -2147483648 to 2147483647");
    row("chipset", "2147483648", "chipset needs a whole number from -2147483648 to 2147483647");
    row("firmware-status", "", "firmware-status needs a value, CODE");
    row("vendor-id", "-1", "vendor-id needs a whole number from 0 to 65535");
    row("vendor-id", "65536", "vendor-id needs a whole number from 0 to 65535");
    row("product-id", "0x10000", "product-id needs a whole number from 0 to 65535");
    const char *const textRule = " needs a text of characters up to U+00FF, with \\xNN for any byte";
    row("new-serial", "", "new-serial needs a value, SERIAL");
    row("new-serial", "\\x", ("new-serial"s + textRule).c_str());
    row("duplicate-serial", "\xe2\x82\xac", ("duplicate-serial"s + textRule).c_str());
    const std::string fieldRule = "text needs FIELD=TEXT, where FIELD is one of " + recordFieldNames()
        + ", and \\xNN stands for any byte";
    row("text", "", "text needs a value, FIELD=TEXT");
    for (const char *value :
        {"modelName", "colour=red", "=red", "ModelName=x", "modelName=\\", "chipset=1"}) {
        row("text", value, fieldRule.c_str());
    }
}

void tst_FaultValues::refusesValues()
{
    QFETCH(std::string, name);
    QFETCH(std::string, value);
    QFETCH(std::string, reason);
    const std::optional<std::string> given = value.empty() ? std::nullopt : std::optional(value);
    QCOMPARE(refusal([&] { parseFault(kindOf(name), given); }), reason);
}

void tst_FaultValues::checksWhatNoPersonTyped_data()
{
    QTest::addColumn<std::string>("name");
    QTest::addColumn<qint64>("number");
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("field");
    QTest::addColumn<bool>("fits");
    const auto row = [](const char *title, const char *name, qint64 number, const char *text,
                         const char *field, bool fits) {
        QTest::newRow(title) << std::string(name) << number << std::string(text) << std::string(field)
                             << fits;
    };
    row("none", "no-return", 0, "", "", true);
    row("none with number", "no-return", 1, "", "", false);
    row("none with text", "no-return", 0, "x", "", false);
    row("number at the minimum", "slow-probe", 0, "", "", true);
    row("number below", "slow-probe", -1, "", "", false);
    row("number at the maximum", "slow-probe", 60000, "", "", true);
    row("number above", "slow-probe", 60001, "", "", false);
    row("number with field", "chipset", 1, "", "modelName", false);
    row("optional number left out", "truncated-image", 0, "", "", true);
    row("optional number below", "truncated-image", -1, "", "", false);
    row("text", "new-serial", 0, "x", "", true);
    row("text left out", "new-serial", 0, "", "", false);
    row("text with field", "new-serial", 0, "x", "modelName", false);
    row("optional text left out", "duplicate-serial", 0, "", "", true);
    row("field", "text", 0, "x", "modelName", true);
    row("field with an empty text", "text", 0, "", "modelName", true);
    row("field left out", "text", 0, "x", "", false);
}

void tst_FaultValues::checksWhatNoPersonTyped()
{
    QFETCH(std::string, name);
    QFETCH(qint64, number);
    QFETCH(std::string, text);
    QFETCH(std::string, field);
    QFETCH(bool, fits);
    Fault fault = textFault(kindOf(name).kind, text, field.c_str());
    fault.number = number;
    const std::string found = refusal([&] { check(fault); });
    QCOMPARE(found.empty(), fits);
    QVERIFY2(fits || found.rfind(name, 0) == 0, found.c_str());
}

static const TestClass<tst_FaultValues> faultValuesTests;

#include "tst_FaultValues.moc"
