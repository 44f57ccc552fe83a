#include "bench/core/Fault.h"
#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <QFile>
#include <QtTest>

using namespace bench;

/// The command line of drive-bench: help, spellings, wrong usage, the manual page.
class tst_CommandUsage : public QObject
{
    Q_OBJECT

private slots:
    void listsItsCommands();
    void everyCommandHasHelpWithAnExample_data();
    void everyCommandHasHelpWithAnExample();
    void saysItsVersion();
    void takesOptionsInAnyPlaceAndSpelling_data();
    void takesOptionsInAnyPlaceAndSpelling();
    void theBenchBehindTheCommandCounts();
    void readsNumbers_data();
    void readsNumbers();
    void wrongUsage_data();
    void wrongUsage();
    void theManualNamesEverything();
};

namespace {

const QStringList AllCommands{"init", "export", "models", "list", "show", "add", "remove", "plug", "unplug",
    "replug", "power-cycle", "fault", "clear", "image build", "image inspect", "companion install",
    "companion uninstall", "companion start", "companion stop", "watch", "panel"};

QStringList optionsInHelp(const QString &command)
{
    QStringList found;
    const QString help = QString::fromUtf8(driveBench(command + " --help").output);
    for (const QString &line : help.split('\n')) {
        if (line.startsWith("  -")) {
            found.append(line.trimmed().section(' ', 0, 0).section(',', -1));
        }
    }
    return found;
}

} // namespace

void tst_CommandUsage::listsItsCommands()
{
    const Ended help = driveBench("--help");
    QCOMPARE(help.status, 0);
    for (const QString &command : AllCommands) {
        QVERIFY2(
            help.output.contains(("\n  " + command.section(' ', 0, 0) + ' ').toUtf8()), qPrintable(command));
    }
    QCOMPARE(driveBench("-h").output, help.output);
    const Ended nothing = driveBench(QStringList());
    QCOMPARE(nothing.status, 2);
    QCOMPARE(nothing.output, help.output);
    for (const char *group : {"image", "companion"}) {
        const QString commands = QString::fromUtf8(driveBench({group, "--help"}).output);
        for (const QString &command : AllCommands.filter(group)) {
            QVERIFY2(commands.contains("\n  " + command.section(' ', 1) + ' '), qPrintable(command));
        }
    }
}

void tst_CommandUsage::everyCommandHasHelpWithAnExample_data()
{
    QTest::addColumn<QString>("command");
    for (const QString &command : AllCommands) {
        QTest::newRow(qPrintable(command)) << command;
    }
}

void tst_CommandUsage::everyCommandHasHelpWithAnExample()
{
    QFETCH(QString, command);
    const Ended help = driveBench(command + " --help");
    QCOMPARE(help.status, 0);
    QCOMPARE(help.errors, QByteArray());
    QVERIFY2(help.output.at(0) >= 'A' && help.output.at(0) <= 'Z', help.output.constData());
    QVERIFY(help.output.contains(("Usage: drive-bench " + command + ' ').toUtf8()));
    QVERIFY(help.output.contains("\nExample:\n  drive-bench " + command.toUtf8()));
    QVERIFY(help.output.contains("--bench DIR"));
    QCOMPARE(driveBench(command + " -h").output, help.output);
}

void tst_CommandUsage::saysItsVersion()
{
    const Ended ended = driveBench("--version");
    QCOMPARE(ended.status, 0);
    QCOMPARE(ended.output, QByteArray("drive-bench " TARVO_VERSION "\n"));
}

void tst_CommandUsage::takesOptionsInAnyPlaceAndSpelling_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("sameAs");
    const QString fault = "fault A pulled-out 16 --once";
    for (const char *line :
        {"--bench @ fault A pulled-out 16 --once", "--bench=@ fault A pulled-out 16 --once",
            "fault --bench @ A pulled-out 16 --once", "fault --bench=@ --once A pulled-out 0x10",
            "fault A --once pulled-out 16 --bench=@", "fault A pulled-out --once 16 --bench @"}) {
        QTest::newRow(line) << line << fault;
    }
    for (const char *line :
        {"--bench=@ companion install", "companion --bench @ install", "companion install --bench=@"}) {
        QTest::newRow(line) << line << "companion install";
    }
    QTest::newRow("add") << "add Pebble --bench=@ --rate=99 --unplugged --serial=B"
                         << "add --serial B --rate 99 --unplugged Pebble";
    QTest::newRow("negative number") << "fault A unmount-returns -2 --bench @"
                                     << "fault A unmount-returns -2";
    QTest::newRow("end of the options") << "unplug --bench @ -- A"
                                        << "unplug A";
}

/// What the line has done to its bench is what `sameAs` does to another one.
void tst_CommandUsage::takesOptionsInAnyPlaceAndSpelling()
{
    QFETCH(QString, line);
    QFETCH(QString, sameAs);
    QString contents[2];
    for (int i = 0; i < 2; ++i) {
        TemporaryBench bench;
        bench.addOutdated("A", "Pebble");
        const std::string before = bench.content();
        const QString directory = QString::fromStdString(bench.directory());
        const Ended ended = i == 0 ? driveBench(QString(line).replace('@', directory))
                                   : driveBench(sameAs, bench.directory());
        QVERIFY2(ended.status == 0, ended.errors.constData());
        QVERIFY(bench.content() != before);
        contents[i] =
            QString::fromStdString(bench.content()).remove(QRegularExpression("\"(un)?pluggedAt\": [0-9]+"));
    }
    QCOMPARE(contents[0], contents[1]);
}

void tst_CommandUsage::theBenchBehindTheCommandCounts()
{
    TemporaryBench bench;
    const QString directory = QString::fromStdString(bench.directory());
    QCOMPARE(driveBench({"--bench", "/nowhere", "list", "--bench", directory}).status, 0);
    QCOMPARE(driveBench({"--bench", directory, "list", "--bench", "/nowhere"}).status, 1);
}

void tst_CommandUsage::readsNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<std::int64_t>("number");
    QTest::newRow("decimal") << "16" << std::int64_t(16);
    QTest::newRow("hexadecimal") << "0x10" << std::int64_t(16);
    QTest::newRow("leading zero") << "010" << std::int64_t(10);
    QTest::newRow("largest") << "1000000000" << std::int64_t(1000000000);
}

void tst_CommandUsage::readsNumbers()
{
    QFETCH(QString, text);
    QFETCH(std::int64_t, number);
    TemporaryBench bench;
    const Ended ended = driveBench({"add", "Pebble", "--serial", "A", "--rate", text}, bench.directory());
    QVERIFY2(ended.status == 0, ended.errors.constData());
    QCOMPARE(bench.drive("A").flashRate, number);
}

void tst_CommandUsage::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const QStringList &arguments, const char *line, const char *see) {
        QTest::newRow(name) << arguments
                            << QString("drive-bench: %1*; see: drive-bench%2 --help\n").arg(line, see);
    };
    row("command", {"fly"}, "there is no command \"fly\"", "");
    row("similar command", {"plgu", "A"}, "there is no command \"plgu\" (did you mean \"plug\"?)", "");
    row("command in capitals", {"LIST"}, "there is no command \"LIST\"", "");
    row("half a command", {"image"}, "A subcommand is required", " image");
    row("similar half a command", {"image", "biuld"},
        "there is no command \"biuld\" (did you mean \"build\"?)", " image");
    row("other half a command", {"companion", "strat"},
        "there is no command \"strat\" (did you mean \"start\"?)", " companion");
    row("half a command like no other", {"companion", "x"}, "there is no command \"x\"", " companion");
    row("option", {"list", "--fast"}, "The following argument was not expected: --fast", " list");
    row("option with a value", {"list", "--bnech=/x"}, "The following argument was not expected: --bnech=/x",
        " list");
    row("option of another command", {"list", "--once"}, "The following argument was not expected: --once",
        " list");
    row("option without a command", {"--fast"}, "there is no option \"--fast\"", "");
    row("option before a command that is none", {"--bench", "/x", "fly"}, "there is no command \"fly\"", "");
    row("option value", {"list", "--bench"}, "--bench: 1 required DIR missing", " list");
    row("option twice", {"list", "--bench", "a", "--bench", "b"},
        "--bench: At Most 1 required but received 2", " list");
    row("option number", {"replug", "A", "--for", "soon"}, "--for: needs a whole number from 0 to 3600",
        " replug");
    row("option number with more", {"replug", "A", "--for=5x"}, "--for: needs a whole number from 0",
        " replug");
    row("option range", {"init", "--rate", "0"}, "--rate: needs a whole number from 1", " init");
    for (const char *command : {"show", "remove", "plug", "unplug", "replug", "power-cycle", "clear"}) {
        row(command, {command}, "SERIAL is required", qPrintable(QString(" ") + command));
    }
    row("add", {"add"}, "MODEL is required", " add");
    row("inspect", {"image", "inspect"}, "FILE is required", " image inspect");
    row("too many", {"plug", "A", "B"}, "The following argument was not expected: B", " plug");
    row("empty serial number", {"plug", ""}, "\"\" is no serial number", " plug");
    row("what the file has is not changed", {"init", "--from", "x", "--rate", "5"}, "--*excludes --*",
        " init");
    row("fault", {"fault", "A"}, "fault needs SERIAL FAULT, or --list", " fault");
    row("fault unknown", {"fault", "A", "smoke"}, "there is no fault \"smoke\"", " fault");
    row("fault without value", {"fault", "A", "flash-error"}, "flash-error needs a value, BYTES", " fault");
    row("fault with value", {"fault", "A", "no-return", "1"}, "no-return takes no value", " fault");
    row("fault number", {"fault", "A", "flash-error", "-1"}, "flash-error needs a whole number from 0",
        " fault");
    row("fault field", {"fault", "A", "text", "colour=red"}, "text needs FIELD=TEXT", " fault");
    row("fault escape", {"fault", "A", "text", "modelName=\\q"}, "text needs FIELD=TEXT", " fault");
    row("clear unknown", {"clear", "A", "smoke"}, "there is no fault \"smoke\"", " clear");
    row("no name of a fault", {"clear", "A", ""}, "there is no fault \"\"", " clear");
    row("image version", {"image", "build", "--firmware", QString(33, '1')},
        "--firmware and --configuration take 1 to 32", " image build");
    row("version that no image can hold", {"add", "Pebble", "--configuration", QString::fromUtf8("\u65E5")},
        "--firmware and --configuration take 1 to 32", " add");
    row("version that is too long", {"add", "Pebble", "--firmware", QString(33, '9')},
        "--firmware and --configuration take 1 to 32", " add");
    row("line break", {"fly\nby"}, "there is no command \"fly\\x0Aby\"", "");
}

void tst_CommandUsage::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    const Ended ended = driveBench(arguments, bench.directory());
    QCOMPARE(ended.status, 2);
    // An asterisk stands for anything.
    const QString pattern = QRegularExpression::escape(line).replace("\\*", "[^\n]*");
    QVERIFY2(QRegularExpression("\\A" + pattern + "\\z").match(QString::fromUtf8(ended.errors)).hasMatch(),
        ended.errors.constData());
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(bench.content(), before);
}

void tst_CommandUsage::theManualNamesEverything()
{
    QFile file(MANUAL);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll()).remove('\\');
    for (const QString &command : AllCommands) {
        QVERIFY2(manual.contains("B" + command) || manual.contains("B " + command), qPrintable(command));
        const QStringList options = optionsInHelp(command);
        QVERIFY(options.contains("--help") && options.contains("--bench"));
        for (const QString &option : options) {
            QVERIFY2(manual.contains(option), qPrintable(command + ' ' + option));
        }
    }
    for (const FaultDescription &kind : faultDescriptions()) {
        QVERIFY2(manual.contains(QLatin1String(kind.name)), kind.name);
    }
    QVERIFY(manual.contains("--version"));
    QVERIFY(manual.contains("Tarvo Firmware Updater " TARVO_VERSION));
}

static const TestClass<tst_CommandUsage> commandUsageTests;
#include "tst_CommandUsage.moc"
