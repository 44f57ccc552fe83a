#include "bench/core/Bytes.h"
#include "bench/core/Sha256.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

class tst_Sha256 : public QObject
{
    Q_OBJECT

private slots:
    void digests_data();
    void digests();
};

void tst_Sha256::digests_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<std::string>("digest");
    QTest::newRow("0 bytes") << 0 << "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"s;
    QTest::newRow("3 bytes") << 3 << "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"s;
    QTest::newRow("55 bytes") << 55 << "595615dbe4f0f407ae397d08b4c2cb870cb9b0e11937416f950c5160acf9c005"s;
    QTest::newRow("56 bytes") << 56 << "784f623b787495078e93ff28a25b581df0584055a7e71d8cd90c454716b92f51"s;
    QTest::newRow("63 bytes") << 63 << "5ca3e1ef5207490eac01a795e5cc94d59582a5118bf9534665c8668d87aa647c"s;
    QTest::newRow("64 bytes") << 64 << "2fcd5a0d60e4c941381fcc4e00a4bf8be422c3ddfafb93c809e8d1e2bfffae8e"s;
    QTest::newRow("65 bytes") << 65 << "1b3cd1877ab2f2f19f7be001722554f336cb799df0329de0bb4c118dc6abc06d"s;
    QTest::newRow("119 bytes") << 119 << "faef67da856d6fd9c8d12f9ed0a4fefd3cf0ce085ab43e2907418d457e3c354b"s;
    QTest::newRow("120 bytes") << 120 << "c9512b08619c19fbb503c7da6b46ef20301e5f7a7a5f43989182398536f5c5c8"s;
    QTest::newRow("1000 bytes") << 1000
                                << "915e53a44c18b19bb06ba5b3f5fcaf1dc4651e8404c63425cfc6174e74659d87"s;
}

/// Around the ends of a block of 64 bytes and of the 56 bytes that leave room for the length.
void tst_Sha256::digests()
{
    QFETCH(int, length);
    std::string bytes;
    for (int i = 0; i < length; ++i) {
        bytes += static_cast<char>('a' + i % 26);
    }
    QTEST(hexadecimal(sha256(bytes)), "digest");
}

static const TestClass<tst_Sha256> sha256Tests;

#include "tst_Sha256.moc"
