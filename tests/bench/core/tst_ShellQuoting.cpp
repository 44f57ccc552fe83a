#include "bench/core/ShellQuoting.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

class tst_ShellQuoting : public QObject
{
    Q_OBJECT

private slots:
    void quotesForAShell_data();
    void quotesForAShell();
};

void tst_ShellQuoting::quotesForAShell_data()
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

void tst_ShellQuoting::quotesForAShell()
{
    QFETCH(std::string, text);
    QTEST(shellQuoted(text), "quoted");
}

static const TestClass<tst_ShellQuoting> shellQuotingTests;

#include "tst_ShellQuoting.moc"
