#include "bench/core/Sha256.h"
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
    void readsBytesFromText_data();
    void readsBytesFromText();
    void writesAndReadsHexadecimal();
    void refusesHexadecimal_data();
    void refusesHexadecimal();
    void readsNumbers_data();
    void readsNumbers();
    void quotesForAShell_data();
    void quotesForAShell();
    void digests_data();
    void digests();
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
    QCOMPARE(bytesFromText(textFromBytes(bytes)), std::optional(bytes));
    QCOMPARE(bytesFromHexadecimal(hexadecimal(bytes)), std::optional(bytes));
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

void tst_Text::readsBytesFromText_data()
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

void tst_Text::readsBytesFromText()
{
    QFETCH(std::string, text);
    QFETCH(bool, isLatin1);
    QFETCH(std::string, bytes);
    QCOMPARE(bytesFromText(text), isLatin1 ? std::optional(bytes) : std::nullopt);
}

void tst_Text::writesAndReadsHexadecimal()
{
    QCOMPARE(hexadecimal("\x00\x9f\xfa"s), "009ffa"s);
    QCOMPARE(hexadecimal(""), ""s);
    QCOMPARE(bytesFromHexadecimal("00aAfF"), std::optional("\x00\xaa\xff"s));
    QCOMPARE(bytesFromHexadecimal(""), std::optional(""s));
}

void tst_Text::refusesHexadecimal_data()
{
    QTest::addColumn<std::string>("digits");
    QTest::newRow("odd") << "abc"s;
    for (const char digit : "/:@`gG -x"s) {
        QTest::newRow(QByteArray(1, digit).constData()) << std::string(1, digit) + '0';
        QTest::newRow((QByteArray("0") + digit).constData()) << '0' + std::string(1, digit);
    }
}

void tst_Text::refusesHexadecimal()
{
    QFETCH(std::string, digits);
    QVERIFY(!bytesFromHexadecimal(digits));
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

void tst_Text::quotesForAShell_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("quoted");
    QTest::newRow("plain") << "/a-b_c.d,e=f:g+h%i@09AZ"s
                           << "/a-b_c.d,e=f:g+h%i@09AZ"s;
    QTest::newRow("beyond ASCII") << "caf\xc3\xa9"s
                                  << "caf\xc3\xa9"s;
    QTest::newRow("empty") << ""s
                           << "''"s;
    QTest::newRow("zero") << "\0"s
                          << "'\0'"s;
    QTest::newRow("quote") << "it's"s
                           << "'it'\\''s'"s;
    QTest::newRow("newline") << "a\nb"s
                             << "'a'$'\\n''b'"s;
    for (const char letter : " \t\"$`\\;&|<>()*?[]{}~#!^"s) {
        const std::string text(1, letter);
        QTest::newRow(text.c_str()) << text << '\'' + text + '\'';
    }
}

void tst_Text::quotesForAShell()
{
    QFETCH(std::string, text);
    QTEST(shellQuoted(text), "quoted");
}

void tst_Text::digests_data()
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
void tst_Text::digests()
{
    QFETCH(int, length);
    std::string bytes;
    for (int i = 0; i < length; ++i) {
        bytes += static_cast<char>('a' + i % 26);
    }
    QTEST(hexadecimal(sha256(bytes)), "digest");
}

static const TestClass<tst_Text> textTests;

#include "tst_Text.moc"
