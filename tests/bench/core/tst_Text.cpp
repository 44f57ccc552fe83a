#include "bench/core/Text.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

class tst_Text : public QObject
{
    Q_OBJECT

private slots:
    void escapesBytes_data();
    void escapesBytes();
    void everyByteComesBack();
    void refusesEscapes_data();
    void refusesEscapes();
    void takesSmallHexadecimalDigits();
    void readsNumbers_data();
    void readsNumbers();
};

void tst_Text::escapesBytes_data()
{
    QTest::addColumn<std::string>("bytes");
    QTest::addColumn<std::string>("line");
    QTest::newRow("empty") << ""s
                           << ""s;
    QTest::newRow("plain") << " TV 0001~"s
                           << " TV 0001~"s;
    QTest::newRow("backslash") << "a\\b"s
                               << "a\\x5Cb"s;
    QTest::newRow("zero") << "\0"s
                          << "\\x00"s;
    QTest::newRow("newline") << "a\nb"s
                             << "a\\x0Ab"s;
    QTest::newRow("last control character") << "\x1f"s
                                            << "\\x1F"s;
    QTest::newRow("delete") << "\x7f"s
                            << "\\x7F"s;
    QTest::newRow("above") << "\x80\xe9\xff"s
                           << "\\x80\\xE9\\xFF"s;
}

void tst_Text::escapesBytes()
{
    QFETCH(std::string, bytes);
    QFETCH(std::string, line);
    QCOMPARE(escaped(bytes), line);
    QCOMPARE(unescaped(line), std::optional(bytes));
}

void tst_Text::everyByteComesBack()
{
    const std::string bytes = everyByte();
    QCOMPARE(unescaped(escaped(bytes)), std::optional(bytes));
}

void tst_Text::refusesEscapes_data()
{
    QTest::addColumn<std::string>("text");
    QTest::newRow("backslash alone") << "\\"s;
    QTest::newRow("no digits") << "\\x"s;
    QTest::newRow("one digit") << "\\x1"s;
    QTest::newRow("no hexadecimal digits") << "\\xZZ"s;
    QTest::newRow("one hexadecimal digit") << "\\x1Z"s;
    QTest::newRow("another letter") << "\\n00"s;
    QTest::newRow("capital letter") << "\\X00"s;
    QTest::newRow("in the middle") << "a\\b00"s;
    QTest::newRow("above U+00FF") << "\xe2\x82\xac"s;
    QTest::newRow("no UTF-8") << "\xff"s;
}

void tst_Text::refusesEscapes()
{
    QFETCH(std::string, text);
    QVERIFY(!unescaped(text));
}

void tst_Text::takesSmallHexadecimalDigits()
{
    QCOMPARE(unescaped("\\xe9\\x0a"), std::optional("\xe9\n"s));
    // A character of the text stands for its byte.
    QCOMPARE(unescaped("\xc3\xa9"), std::optional("\xe9"s));
}

void tst_Text::readsNumbers_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<bool>("isNumber");
    QTest::addColumn<qint64>("number");
    QTest::newRow("zero") << "0"s << true << qint64(0);
    QTest::newRow("leading zeros") << "010"s << true << qint64(10);
    QTest::newRow("negative") << "-7"s << true << qint64(-7);
    QTest::newRow("hexadecimal") << "0x1aF"s << true << qint64(0x1AF);
    QTest::newRow("hexadecimal, capital") << "0XFF"s << true << qint64(255);
    QTest::newRow("largest") << "9223372036854775807"s << true << std::numeric_limits<qint64>::max();
    QTest::newRow("smallest") << "-9223372036854775808"s << true << std::numeric_limits<qint64>::min();
    for (const char *wrong : {"", "-", "+1", " 1", "1 ", "1.0", "1e3", "one", "--1", "0x", "0x-1", "-0x1",
             "0xG", "ff", "9223372036854775808", "0x8000000000000000"}) {
        QTest::newRow(wrong) << std::string(wrong) << false << qint64(0);
    }
}

void tst_Text::readsNumbers()
{
    QFETCH(std::string, text);
    QFETCH(bool, isNumber);
    QFETCH(qint64, number);
    QCOMPARE(numberFromText(text), isNumber ? std::optional<std::int64_t>(number) : std::nullopt);
}

static const TestClass<tst_Text> textTests;

#include "tst_Text.moc"
