#include "bench/core/Text.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

using namespace bench;
using namespace std::string_literals;

/// What texts become on their way from a drive to a person and back.
class tst_Text : public QObject
{
    Q_OBJECT

private slots:
    void everyByteComesBack();
    void noTextOfADrive_data();
    void noTextOfADrive();
    void isWrittenOnOneLine_data();
    void isWrittenOnOneLine();
    void isShortened();
    void aWordOfTheShellIsThatWord_data();
    void aWordOfTheShellIsThatWord();
    void readsNumbers_data();
    void readsNumbers();
};

void tst_Text::everyByteComesBack()
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    const std::string text = textFromBytes(bytes);
    QCOMPARE(QString::fromStdString(text), QString::fromLatin1(bytes.data(), 256));
    QCOMPARE(bytesFromText(text).value(), bytes);
    QCOMPARE(unescaped(escaped(text)).value(), text);
    QCOMPARE(escaped("a\\\n\x7F\u00E9~"), "a\\x5C\\x0A\\x7F\\xE9~"s);
}

void tst_Text::noTextOfADrive_data()
{
    QTest::addColumn<std::string>("text");
    QTest::newRow("above U+00FF") << "a\u0100"s;
    QTest::newRow("cut short") << "a\xC3"s;
    QTest::newRow("no continuation") << "\xC3z"s;
    QTest::newRow("three bytes") << "\u65E5"s;
    QTest::newRow("continuation alone") << "\xA9"s;
    QTest::newRow("overlong") << "\xC0\x80"s;
}

void tst_Text::noTextOfADrive()
{
    QFETCH(std::string, text);
    QVERIFY(!bytesFromText(text));
    QVERIFY(!unescaped(text));
    for (const char *escape : {"\\", "\\x", "\\x4", "\\n", "\\xG0", "\\x0G", "\\x-1", "\\x+1", "\\X41"}) {
        QVERIFY2(!unescaped(escape), escape);
    }
}

void tst_Text::isWrittenOnOneLine_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("line");
    QTest::newRow("plain") << "a b~"s
                           << "a b~"s;
    QTest::newRow("other scripts") << "\u00E9\u65E5\U0001F600"s
                                   << "\u00E9\u65E5\U0001F600"s;
    QTest::newRow("control characters") << "\x1B[2J\n\x7F\0"s
                                        << "\\x1B[2J\\x0A\\x7F\\x00"s;
    QTest::newRow("second set of them") << "\u0080\u009B\u009F\u00A0"s
                                        << "\\x80\\x9B\\x9F\u00A0"s;
    QTest::newRow("other characters that end alike") << "\u00DB\u011B"s
                                                     << "\u00DB\u011B"s;
    QTest::newRow("no UTF-8") << "a\xE9z\xFF\xC3"s
                              << "a\\xE9z\\xFF\\xC3"s;
    QTest::newRow("cut short") << "\xF0\x9F\x98"s
                               << "\\xF0\\x9F\\x98"s;
    QTest::newRow("beyond the last") << "\xF5\x80\x80\x80"s
                                     << "\\xF5\\x80\\x80\\x80"s;
}

void tst_Text::isWrittenOnOneLine()
{
    QFETCH(std::string, text);
    QFETCH(std::string, line);
    QCOMPARE(oneLine(text), line);
}

void tst_Text::isShortened()
{
    QCOMPARE(shortened(std::string(300, 'x')), std::string(300, 'x'));
    for (const char *character : {"x", "\u00E9", "\u65E5", "\U0001F600"}) {
        const QString whole = "begin" + QString(character).repeated(301) + "end";
        const std::string line = shortened(whole.toStdString());
        QVERIFY(line.size() > 290 && line.size() <= 300);
        QCOMPARE(oneLine(line), line); // no character is cut in two
        const QStringList parts = QString::fromStdString(line).split(" ... ");
        QCOMPARE(int(parts.size()), 2);
        QVERIFY(whole.startsWith(parts[0]) && whole.endsWith(parts[1]));
    }
}

void tst_Text::aWordOfTheShellIsThatWord_data()
{
    QTest::addColumn<std::string>("word");
    QTest::addColumn<bool>("isPlain");
    QTest::newRow("plain") << "/a-b_c.d,e=f:g+h%i@9Z"s << true;
    QTest::newRow("empty") << ""s << false;
    QTest::newRow("space") << "a b"s << false;
    QTest::newRow("quotes") << "it's \"so\""s << false;
    QTest::newRow("line breaks") << "\na\n"s << false;
    QTest::newRow("special") << "$HOME `a` \\ ! * ~ ; & | < > ( ) [ ] { } # ?"s << false;
}

void tst_Text::aWordOfTheShellIsThatWord()
{
    QFETCH(std::string, word);
    QFETCH(bool, isPlain);
    const std::string quoted = shellQuoted(word);
    QCOMPARE(quoted == word, isPlain);
    QVERIFY(!contains(quoted, "\n"));
    QProcess shell;
    shell.start("bash", {"-c", "printf %s " + QString::fromStdString(quoted)});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.readAllStandardOutput().toStdString(), word);
}

void tst_Text::readsNumbers_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<bool>("isNumber");
    QTest::addColumn<qint64>("number");
    const auto row = [](const char *text, qint64 number) {
        QTest::newRow(text) << text + ""s << true << number;
    };
    row("0", 0);
    row("010", 10);
    row("-7", -7);
    row("0x1F", 31);
    row("0Xff", 255);
    row("9223372036854775807", INT64_MAX);
    for (const char *text : {"", " 1", "1 ", "1.5", "1e3", "+1", "0x", "0x-1", "x1", "9223372036854775808"}) {
        QTest::addRow("no number: \"%s\"", text) << text + ""s << false << qint64(0);
    }
}

void tst_Text::readsNumbers()
{
    QFETCH(std::string, text);
    QFETCH(bool, isNumber);
    QFETCH(qint64, number);
    const auto read = numberFromText(text);
    QCOMPARE(read.has_value(), isNumber);
    QCOMPARE(qint64(read.value_or(0)), number);
}

static const TestClass<tst_Text> textTests;
#include "tst_Text.moc"
