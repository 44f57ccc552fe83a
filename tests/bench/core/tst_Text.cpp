// SPDX-License-Identifier: MIT
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
    void noTextOfADrive();
    void isWrittenOnOneLine();
    void isShortened();
    void aWordOfTheShellIsThatWord();
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

void tst_Text::noTextOfADrive()
{
    for (const char *text : {"a\u0100", "a\xC3", "\xC3z", "\u65E5", "\xA9", "\xC0\x80"}) {
        QVERIFY2(!bytesFromText(text) && !unescaped(text), text);
    }
    for (const char *escape : {"\\", "\\x", "\\x4", "\\n", "\\xG0", "\\x0G", "\\x-1", "\\x+1", "\\X41"}) {
        QVERIFY2(!unescaped(escape), escape);
    }
}

void tst_Text::isWrittenOnOneLine()
{
    const std::pair<std::string, std::string> lines[] = {{"a b~", "a b~"},
        {"\u00E9\u65E5\U0001F600\u00DB\u011B", "\u00E9\u65E5\U0001F600\u00DB\u011B"},
        {"\x1B[2J\n\x7F\0"s, "\\x1B[2J\\x0A\\x7F\\x00"},
        {"\u0080\u009B\u009F\u00A0", "\\x80\\x9B\\x9F\u00A0"}, {"a\xE9z\xFF\xC3", "a\\xE9z\\xFF\\xC3"},
        {"\xF0\x9F\x98", "\\xF0\\x9F\\x98"}, {"\xF5\x80\x80\x80", "\\xF5\\x80\\x80\\x80"}};
    for (const auto &[text, line] : lines) {
        QCOMPARE(oneLine(text), line);
    }
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

void tst_Text::aWordOfTheShellIsThatWord()
{
    for (const char *word : {"/a-b_c.d,e=f:g+h%i@9Z", "", "a b", "it's \"so\"", "\na\n",
             "$HOME `a` \\ ! * ~ ; & | < > ( ) [ ] { } # ?"}) {
        const std::string quoted = shellQuoted(word);
        QCOMPARE(quoted == word, *word == '/');
        QVERIFY(!contains(quoted, "\n"));
        QProcess shell;
        shell.start("bash", {"-c", "printf %s " + QString::fromStdString(quoted)});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.readAllStandardOutput(), QByteArray(word));
    }
}

void tst_Text::readsNumbers()
{
    const std::pair<const char *, std::int64_t> numbers[] = {{"0", 0}, {"010", 10}, {"-7", -7}, {"0x1F", 31},
        {"0Xff", 255}, {"9223372036854775807", std::numeric_limits<std::int64_t>::max()}};
    for (const auto &[text, number] : numbers) {
        QCOMPARE(numberFromText(text).value(), number);
    }
    for (const char *text : {"", " 1", "1 ", "1.5", "1e3", "+1", "0x", "0x-1", "x1", "9223372036854775808"}) {
        QVERIFY2(!numberFromText(text), text);
    }
}

static const TestClass<tst_Text> textTests;
#include "tst_Text.moc"
