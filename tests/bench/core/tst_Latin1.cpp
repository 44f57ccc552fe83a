#include "bench/core/Latin1.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

class tst_Latin1 : public QObject
{
    Q_OBJECT

private slots:
    void everyByteComesBack();
    void readsBytesFromText_data();
    void readsBytesFromText();
};

void tst_Latin1::everyByteComesBack()
{
    QCOMPARE(bytesFromText(textFromBytes(everyByte())), std::optional(everyByte()));
}

void tst_Latin1::readsBytesFromText_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<bool>("isLatin1");
    QTest::addColumn<std::string>("bytes");
    QTest::newRow("empty") << ""s << true << ""s;
    QTest::newRow("plain") << "A\0z"s << true << "A\0z"s;
    QTest::newRow("first of two bytes") << "\xc2\x80"s << true << "\x80"s;
    QTest::newRow("last of two bytes") << "\xc3\xbf"s << true << "\xff"s;
    QTest::newRow("U+0100") << "\xc4\x80"s << false << ""s;
    QTest::newRow("overlong") << "\xc1\xbf"s << false << ""s;
    QTest::newRow("three bytes") << "\xe2\x82\xac"s << false << ""s;
    QTest::newRow("trail alone") << "\x80"s << false << ""s;
    QTest::newRow("lead at the end") << "a\xc3"s << false << ""s;
    QTest::newRow("lead without trail") << "\xc3Z"s << false << ""s;
    QTest::newRow("two leads") << "\xc3\xc3"s << false << ""s;
}

void tst_Latin1::readsBytesFromText()
{
    QFETCH(std::string, text);
    QFETCH(bool, isLatin1);
    QFETCH(std::string, bytes);
    QCOMPARE(bytesFromText(text), isLatin1 ? std::optional(bytes) : std::nullopt);
}

static const TestClass<tst_Latin1> latin1Tests;

#include "tst_Latin1.moc"
