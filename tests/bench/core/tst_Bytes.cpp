#include "bench/core/Bytes.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

class tst_Bytes : public QObject
{
    Q_OBJECT

private slots:
    void everyByteComesBack();
    void putsTheLeastSignificantByteFirst();
    void writesAndReadsHexadecimal();
    void refusesHexadecimal_data();
    void refusesHexadecimal();
};

void tst_Bytes::everyByteComesBack()
{
    QCOMPARE(bytesFromHexadecimal(hexadecimal(everyByte())), std::optional(everyByte()));
}

void tst_Bytes::putsTheLeastSignificantByteFirst()
{
    QCOMPARE(littleEndian(0x80A0B0FF), "\xFF\xB0\xA0\x80"s);
    QCOMPARE(littleEndianAt("\x11\x22\xFF\xB0\xA0\x80\x33"s, 2), std::uint32_t(0x80A0B0FF));
}

void tst_Bytes::writesAndReadsHexadecimal()
{
    QCOMPARE(hexadecimal("\x00\x9f\xfa"s), "009ffa"s);
    QCOMPARE(hexadecimal(""), ""s);
    QCOMPARE(bytesFromHexadecimal("00aAfF"), std::optional("\x00\xaa\xff"s));
    QCOMPARE(bytesFromHexadecimal(""), std::optional(""s));
}

void tst_Bytes::refusesHexadecimal_data()
{
    QTest::addColumn<std::string>("digits");
    QTest::newRow("odd") << "abc"s;
    for (const char digit : "/:@`gG -x"s) {
        QTest::newRow(QByteArray(1, digit).constData()) << std::string(1, digit) + '0';
        QTest::newRow((QByteArray("0") + digit).constData()) << '0' + std::string(1, digit);
    }
}

void tst_Bytes::refusesHexadecimal()
{
    QFETCH(std::string, digits);
    QVERIFY(!bytesFromHexadecimal(digits));
}

static const TestClass<tst_Bytes> bytesTests;

#include "tst_Bytes.moc"
