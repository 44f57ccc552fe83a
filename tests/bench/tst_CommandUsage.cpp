// SPDX-License-Identifier: MIT
#include "Version.h"
#include "bench/core/Files.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

using namespace bench;

/// The command line of drive-bench: help, spellings, wrong usage, refusals, the manual page.
class tst_CommandUsage : public QObject
{
    Q_OBJECT

private slots:
    void eachCommandHasHelp_data();
    void eachCommandHasHelp();
    void noValueIsEmpty_data() { eachCommandHasHelp_data(); }
    void noValueIsEmpty();
    void helpsWithoutACommand();
    void takesOptionsInAnyPlaceAndSpelling_data();
    void takesOptionsInAnyPlaceAndSpelling();
    void wrongUsage_data();
    void wrongUsage();
    void refuses_data();
    void refuses();
    void refusesALargeDocument();
};

namespace {

QString manual()
{
    QFile file(MANUAL);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).remove('\\') : QString();
}

} // namespace

void tst_CommandUsage::eachCommandHasHelp_data()
{
    QTest::addColumn<QStringList>("arguments"); // with which it works
    const auto row = [](const char *command, const QStringList &arguments) { addRow(command, arguments); };
    for (const char *command : {"init", "export", "models", "list", "image build", "companion install",
             "companion uninstall", "panel"}) {
        row(command, {});
    }
    for (const char *command : {"show", "remove", "plug", "unplug", "replug", "power-cycle", "clear"}) {
        row(command, {"A"});
    }
    row("add", {"Pebble"});
    row("fault", {"A", "slow-probe", "1"});
}

void tst_CommandUsage::eachCommandHasHelp()
{
    const QString command = QTest::currentDataTag();
    const Ended help = driveBench(command + " --help");
    QCOMPARE(help.status, 0);
    QCOMPARE(help.errors, QByteArray());
    QVERIFY2(help.output.at(0) >= 'A' && help.output.at(0) <= 'Z', help.output.constData());
    QVERIFY(help.output.contains(("Usage: drive-bench " + command + ' ').toUtf8()));
    QVERIFY(help.output.contains("\nExample:\n  drive-bench " + command.toUtf8()));
    QCOMPARE(driveBench(command + " -h").output, help.output);
    const QString group = command.section(' ', 0, -2);
    const QString listed = QString::fromUtf8(driveBench((group + " --help").trimmed()).output);
    QVERIFY(listed.contains("\n  " + command.section(' ', -1) + ' '));
    QVERIFY2(manual().contains("B" + command) || manual().contains("B " + command), qPrintable(command));
    auto options = QRegularExpression("\n +(?:-h,)?(--[a-z]+)").globalMatch(QString::fromUtf8(help.output));
    QVERIFY(options.hasNext());
    while (options.hasNext()) {
        const QString option = options.next().captured(1);
        QVERIFY2(manual().contains(option), qPrintable(option));
    }
}

/// An unset variable of a script must not pass for a name.
void tst_CommandUsage::noValueIsEmpty()
{
    QFETCH(QStringList, arguments);
    const QStringList command = QString(QTest::currentDataTag()).split(' ');
    const QString help = QString::fromUtf8(driveBench(command + QStringList{"--help"}).output);
    QList<QStringList> lines{command + arguments + QStringList{"--bench", ""}};
    auto options = QRegularExpression("\n +(--[a-z]+) [A-Z]+").globalMatch(help);
    while (options.hasNext()) {
        lines.append(command + arguments + QStringList{options.next().captured(1), ""});
    }
    for (int i = 0; i < arguments.size(); ++i) {
        lines.append(command + arguments);
        lines.last()[command.size() + i].clear();
    }
    TemporaryBench bench;
    bench.addOutdated("A");
    const std::string before = bench.content();
    for (const QStringList &line : lines) {
        const Ended ended = driveBench(line, bench.directory());
        QVERIFY2(
            ended.status == 2 && ended.errors.count('\n') == 1, qPrintable(line.join('|') + ended.errors));
        QCOMPARE(bench.content(), before);
    }
}

void tst_CommandUsage::helpsWithoutACommand()
{
    const Ended help = driveBench("--help");
    QCOMPARE(help.status, 0);
    const Ended nothing = driveBench(QStringList());
    QCOMPARE(nothing.status, 2);
    QCOMPARE(nothing.output, help.output);
    QCOMPARE(driveBench("--version").output, QByteArray("drive-bench ") + TarvoVersion + '\n');
    QVERIFY(manual().contains(QString("Tarvo Firmware Updater ") + TarvoVersion));
}

void tst_CommandUsage::takesOptionsInAnyPlaceAndSpelling_data()
{
    QTest::addColumn<QString>("line");
    for (const char *line : {"--bench @ fault A pulled-out 16 --once",
             "--bench=@ fault A pulled-out 16 --once", "fault --bench @ A pulled-out 16 --once",
             "fault A --once pulled-out 16 --bench=@", "fault --once --bench @ -- A pulled-out 16"}) {
        addRow(line, line);
    }
}

void tst_CommandUsage::takesOptionsInAnyPlaceAndSpelling()
{
    QFETCH(QString, line);
    TemporaryBench bench;
    bench.addOutdated("A");
    const Ended ended = driveBench(line.replace('@', QString::fromStdString(bench.directory())));
    QVERIFY2(ended.status == 0, ended.errors.constData());
    QCOMPARE(faultText(bench.drive("A").faults.at(0)), std::string("pulled-out 16 (once)"));
}

void tst_CommandUsage::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line"); // an asterisk stands for anything
    const auto row = [](const QStringList &arguments, const char *line, const char *see) {
        addRow(qPrintable(arguments.join(' ').left(90)), arguments,
            QString("drive-bench: %1; see: drive-bench%2 --help\n").arg(line, see));
    };
    row({"fly"}, "there is no command \"fly\"", "");
    row({"fly\nby"}, "there is no command \"fly\\x0Aby\"", "");
    row({"--bench", "/x", "fly"}, "there is no command \"fly\"", "");
    row({"image"}, "A subcommand is required", " image");
    row({"image", "biuld"}, "there is no command \"biuld\"", " image");
    row({"--fast"}, "there is no option \"--fast\"", "");
    row({"list", "--fast"}, "The following argument was not expected: --fast", " list");
    row({"list", "--once"}, "The following argument was not expected: --once", " list");
    row({"list", "--bench"}, "--bench: 1 required DIR missing", " list");
    row({"replug", "A", "--for", "soon"}, "--for: needs a whole number from 0 to 3600", " replug");
    row({"replug", "A", "--for=5x"}, "--for: needs a whole number from 0 to 3600", " replug");
    row({"init", "--rate", "0"}, "--rate: needs a whole number from 1 to 1000000000", " init");
    row({"init", "--from", "x", "--rate", "5"}, "--*excludes --*", " init");
    row({"show"}, "SERIAL is required", " show");
    row({"add"}, "MODEL is required", " add");
    row({"plug", "A", "B"}, "The following argument was not expected: B", " plug");
    row({"plug", "\\q"}, "\"\\q\" must hold characters up to U+00FF, and \\xNN for any byte", " plug");
    row({"fault", "A"}, "fault needs SERIAL FAULT, or --list", " fault");
    row({"fault", "A", "smoke"}, "there is no fault \"smoke\"*", " fault");
    row({"fault", "A", "flash-error"}, "flash-error needs a whole number from 0 to 2147483647", " fault");
    row({"fault", "A", "report", "colour=red"}, "report needs FIELD=VALUE, where FIELD is one of *",
        " fault");
    row({"clear", "A", "smoke"}, "there is no fault \"smoke\"*", " clear");
    row({"image", "build", "--firmware", QString(33, '1')},
        "--firmware and --configuration take 1 to 32 ASCII characters each", " image build");
    row({"add", "Pebble", "--configuration", QString(QChar(0xE9))},
        "--firmware and --configuration take 1 to 32 ASCII characters each", " add");
}

void tst_CommandUsage::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    TemporaryBench bench;
    bench.addOutdated("A");
    const std::string before = bench.content();
    const Ended ended = driveBench(arguments, bench.directory());
    QCOMPARE(ended.status, 2);
    const QString pattern = QRegularExpression::escape(line).replace("\\*", "[^\n]*");
    QVERIFY2(QRegularExpression("\\A" + pattern + "\\z").match(QString::fromUtf8(ended.errors)).hasMatch(),
        ended.errors.constData());
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(bench.content(), before);
}

void tst_CommandUsage::refuses_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line"); // its beginning
    const auto row = [](const QStringList &arguments, const QString &line) {
        addRow(qPrintable(arguments.join(' ').left(60)), arguments, "drive-bench: " + line);
    };
    row({"plug", "A"}, "cannot plug in A: it is plugged in already; to restart it, use: drive-bench replug");
    row({"show", "\\xE9"}, "cannot show \\xE9: there is no drive with that serial number on the bench");
    row({"clear", "A", "no-return"}, "cannot clear a fault of A: the fault \"no-return\" is not set; ");
    row({"add", "Pebble", "--serial", "A"},
        "cannot add A: a drive with this serial number is on the bench; ");
    row({"add", "Boulder"}, "there is no model \"Boulder\"; drive-bench models lists them");
    row({"add", "Pebble", "--serial", QString(81, 'x')}, "cannot add xxx");
    row({"add", QString(5000, QChar(0x20AC))}, "there is no model \"\\xE2");
    row({"image", "build", "Boulder"}, "there is no model \"Boulder\"; drive-bench models lists them");
    row({"image", "build", "Skiff", "--output", "/nowhere"},
        "cannot write /nowhere/skiff.tfw: No such file or directory");
    row({"init", "--force", "--from", "/nowhere"}, "cannot read /nowhere: No such file or directory");
    row({"init", "--force", "--from", "/"}, "cannot read /: is a directory");
    row({"init", "--force", "--from", "/dev/zero"}, "cannot read /dev/zero: is not a regular file");
    row({"init", "--force", "--bench", "/"}, "/ holds other files; name a new or an empty directory");
    row({"list", "--bench", "/nowhere"},
        "/nowhere is no bench that can be read: No such file or directory; ");
    row({"companion", "uninstall"}, "the companion is not installed; to install it, use: ");
}

void tst_CommandUsage::refuses()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    TemporaryBench bench;
    bench.addOutdated("A");
    const std::string before = bench.content();
    const Ended ended = driveBench(arguments, bench.directory());
    QCOMPARE(ended.status, 1);
    QVERIFY2(QString::fromUtf8(ended.errors).startsWith(line), ended.errors.constData());
    QVERIFY(ended.errors.endsWith('\n') && ended.errors.count('\n') == 1 && ended.errors.size() < 320);
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(bench.content(), before);
}

void tst_CommandUsage::refusesALargeDocument()
{
    TemporaryBench bench;
    const std::string file = bench.imageDirectory() + "/large";
    writeFile(file, std::string((16 << 20) + 1, ' '));
    const Ended ended =
        driveBench({"init", "--force", "--from", QString::fromStdString(file)}, bench.directory());
    QCOMPARE(ended.status, 1);
    QCOMPARE(ended.errors.toStdString(),
        "drive-bench: " + file + ": is too large; a bench has at most 16777216 bytes\n");
}

static const TestClass<tst_CommandUsage> commandUsageTests;
#include "tst_CommandUsage.moc"
