#include "bench/core/Companion.h"
#include "bench/core/Files.h"
#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <QFileInfo>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace bench;

/// What drive-bench refuses: in one line that says why, and without changing anything.
class tst_CommandRefusals : public QObject
{
    Q_OBJECT

private slots:
    void refusals_data();
    void refusals();
    void aDamagedBenchIsLeftAlone_data();
    void aDamagedBenchIsLeftAlone();
    void changesNothingOnAFullDisk();
    void changesNothingInAReadOnlyDirectory();
    void buildsAllImagesOrNone();
    void companionThatCannotStartChangesNothing();
    void saysSoWhenItCannotPrint();
    void panelNeedsADisplay();
};

namespace {

/// Every command that opens the bench, with a drive "A".
const QStringList BenchCommands{"export", "list", "list --json", "show A", "show A --json", "add Pebble",
    "remove A", "plug A", "unplug A", "replug A", "power-cycle A", "fault A no-return", "clear A",
    "companion install", "companion uninstall", "companion start", "companion stop", "watch --for 0"};

} // namespace

void tst_CommandRefusals::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    const QString unknown = "there is no drive with that serial number";
    for (const char *command : {"show", "remove", "plug", "unplug", "replug", "power-cycle", "clear"}) {
        QTest::newRow(qPrintable(QString("%1, unknown drive").arg(command)))
            << QStringList{command, "Z"} << unknown;
    }
    QTest::newRow("fault, unknown drive") << QStringList{"fault", "Z", "no-return"} << unknown;
    for (const QString &line : BenchCommands) {
        QTest::newRow(qPrintable(line + ", no bench"))
            << line.split(' ') + QStringList{"--bench", "/no where"}
            << "/no where is no bench that can be read: No such file or directory; make one with: "
               "drive-bench init --bench '/no where'";
    }
    QTest::newRow("plug twice") << QStringList{"plug", "A"} << "it is plugged in already";
    QTest::newRow("clear what is not set")
        << QStringList{"clear", "A", "no-return"} << "the fault \"no-return\" is not set";
    QTest::newRow("model") << QStringList{"add", "Boulder"} << "there is no such model";
    QTest::newRow("image of no model")
        << QStringList{"image", "build", "Boulder"} << "there is no such model";
    QTest::newRow("serial number taken")
        << QStringList{"add", "Pebble", "--serial", "A"} << "is on the bench";
    QTest::newRow("serial number too long") << QStringList{"add", "Pebble", "--serial", QString(81, 'x')}
                                            << "has 1 to 80 characters, this one 81";
    QTest::newRow("init twice") << QStringList{"init"} << "add --force";
    QTest::newRow("init below a file")
        << QStringList{"init", "--bench", "/proc/version/bench"} << "cannot make the directory";
    QTest::newRow("init among other files")
        << QStringList{"init", "--force", "--bench", "/etc"} << "/etc holds other files";
    QTest::newRow("list, no bench") << QStringList{"list", "--bench", "/proc"} << "/proc is no bench";
    QTest::newRow("build, no directory")
        << QStringList{"image", "build", "--output", "/nowhere"} << "cannot write /nowhere/";
    QTest::newRow("inspect, no file")
        << QStringList{"image", "inspect", "/nowhere"} << "/nowhere: No such file";
    QTest::newRow("inspect, directory") << QStringList{"image", "inspect", "/"} << "is a directory";
    QTest::newRow("start") << QStringList{"companion", "start"} << "first use: drive-bench companion install";
    QTest::newRow("stop") << QStringList{"companion", "stop"} << "is not running";
    QTest::newRow("uninstall") << QStringList{"companion", "uninstall"} << "is not installed";
    QTest::newRow("line break in a serial number")
        << QStringList{"show", "a\nb"} << "cannot show a\\x0Ab: there is";
    QTest::newRow("line break in a path")
        << QStringList{"list", "--bench", "/a\nb"} << "/a\\x0Ab is no bench";
}

void tst_CommandRefusals::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    const Ended ended = driveBench(arguments, bench.directory());
    QCOMPARE(ended.status, 1);
    QVERIFY2(ended.errors.startsWith("drive-bench: ") && ended.errors.contains(line.toUtf8()),
        ended.errors.constData());
    QCOMPARE(ended.errors.count('\n'), 1);
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(bench.content(), before);
}

void tst_CommandRefusals::aDamagedBenchIsLeftAlone_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("line");
    QTest::newRow("beginning overwritten") << 0 << 4096 << "is damaged: ";
    QTest::newRow("table of contents overwritten") << 100 << 3996 << "is damaged: ";
    QTest::newRow("another program's database") << 68 << 4 << "holds no bench";
    QTest::newRow("newer schema") << 60 << 4 << "use a newer drive-bench";
}

void tst_CommandRefusals::aDamagedBenchIsLeftAlone()
{
    QFETCH(int, start);
    QFETCH(int, length);
    QFETCH(QString, line);
    QTemporaryDir parent;
    const QString directory = parent.filePath("bench");
    const std::string path = directory.toStdString();
    QCOMPARE(driveBench("init", path).status, 0);
    std::string content = readFile(path + "/bench.sqlite", 10000000);
    content.replace(std::size_t(start), std::size_t(length), std::size_t(length), '\x7e');
    writeFile(path + "/bench.sqlite", content);
    for (const QString &command : BenchCommands + QStringList("init")) {
        const Ended ended = driveBench(command, path);
        QVERIFY2(ended.status == 1, qPrintable(command));
        QVERIFY2(ended.errors.startsWith(("drive-bench: ")) && ended.errors.contains(path.c_str())
                && (ended.errors.contains(line.toUtf8())
                    || (command == "init"
                        && (ended.errors.contains("is a bench already")
                            || ended.errors.contains("holds other files")))),
            ended.errors.constData());
        QCOMPARE(ended.errors.count('\n'), 1);
        QCOMPARE(ended.output, QByteArray());
        QVERIFY2(readFile(path + "/bench.sqlite", 10000000) == content, qPrintable(command));
    }
    const Ended completed = driveBench({"--complete", "plug", ""}, path);
    QCOMPARE(completed.output + completed.errors, QByteArray());
}

void tst_CommandRefusals::changesNothingOnAFullDisk()
{
    // A limit on the size of files fails in the same place as a full disk.
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    QTemporaryDir directory;
    const QStringList lines{"unplug A", "clear A", "replug A", "power-cycle A", "add Pebble",
        "fault A no-return", "companion install", "init --force", "init --bench " + directory.filePath("new"),
        "image build --output " + directory.path()};
    for (const QString &line : lines) {
        const Ended ended = runProgram("sh",
            {"-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\" " + line, driveBenchPath()}, bench.directory());
        QCOMPARE(ended.status, 1);
        QVERIFY2(ended.errors.contains("cannot write ") && ended.errors.count('\n') == 1,
            ended.errors.constData());
        QCOMPARE(bench.content(), before);
    }
    QVERIFY(QDir(directory.path()).isEmpty());
}

void tst_CommandRefusals::changesNothingInAReadOnlyDirectory()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    // Root may write anywhere, so that it runs the command as somebody else, from where everybody finds it.
    const QString shared = QFileInfo(QString::fromStdString(bench.directory())).path();
    const QString command = shared + "/drive-bench";
    QVERIFY(QFile::copy(driveBenchPath(), command));
    QStringList start{command};
    if (::geteuid() == 0) {
        start = QStringList{"setpriv", "--reuid=65534", "--clear-groups", command};
    }
    const QString file = QString::fromStdString(bench.directory()) + "/bench.sqlite";
    for (const QString &path : {file, shared, QString::fromStdString(bench.directory())}) {
        QCOMPARE(::chmod(path.toUtf8().constData(), path == file ? 0444 : 0555), 0);
    }
    const QStringList lines{"unplug A", "remove A", "add Pebble", "fault A no-return", "clear A",
        "companion install", "init --force", "init --bench " + shared + "/new",
        "image build --output " + shared};
    for (const QString &line : lines) {
        const QStringList words = start + line.split(' ');
        const Ended ended = runProgram(words.first(), words.mid(1), bench.directory());
        QVERIFY2(ended.status == 1, qPrintable(line));
        QVERIFY2(ended.errors.startsWith("drive-bench: cannot ") && ended.errors.count('\n') == 1,
            ended.errors.constData());
        QVERIFY2(ended.errors.contains("Permission denied") || ended.errors.contains("readonly"),
            ended.errors.constData());
        QCOMPARE(bench.content(), before);
    }
    const QStringList list = start + QStringList{"list"};
    QVERIFY(runProgram(list.first(), list.mid(1), bench.directory()).output.contains("Pebble"));
    for (const QString &path : {shared, QString::fromStdString(bench.directory()), file}) {
        QCOMPARE(::chmod(path.toUtf8().constData(), 0755), 0);
    }
    QVERIFY(!QFileInfo::exists(shared + "/new"));
}

void tst_CommandRefusals::buildsAllImagesOrNone()
{
    QTemporaryDir directory;
    QVERIFY(QDir(directory.path()).mkpath("skiff.tfw/x"));
    const Ended ended = driveBench({"image", "build", "--output", directory.path()});
    QCOMPARE(ended.status, 1);
    QVERIFY2(ended.errors.contains("skiff.tfw: it is a directory"), ended.errors.constData());
    QCOMPARE(
        QDir(directory.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("skiff.tfw"));
}

void tst_CommandRefusals::companionThatCannotStartChangesNothing()
{
    TemporaryBench bench;
    Companion(bench.store(), bench.directory()).install();
    const std::string before = bench.content();
    const QString command = QFileInfo(QString::fromStdString(bench.directory())).path() + "/drive-bench";
    QVERIFY(QFile::copy(driveBenchPath(), command));
    const Ended ended = runProgram(command, {"companion", "start"}, bench.directory());
    QCOMPARE(ended.status, 1);
    QVERIFY2(ended.errors.contains("it must lie in the directory host-tools beside drive-bench"),
        ended.errors.constData());
    QCOMPARE(bench.content(), before);
}

void tst_CommandRefusals::saysSoWhenItCannotPrint()
{
    TemporaryBench bench;
    for (const char *line :
        {"list", "list --json", "models", "export", "fault --list", "--help", "--version"}) {
        const Ended ended = runProgram("sh",
            {"-c", "exec \"$0\" " + QString(line) + " >/dev/full", driveBenchPath()}, bench.directory());
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors, QByteArray("drive-bench: cannot print: No space left on device\n"));
    }
}

void tst_CommandRefusals::panelNeedsADisplay()
{
    TemporaryBench bench;
    const Ended ended = runProgram("env",
        {"-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "-u", "QT_QPA_PLATFORM", driveBenchPath(), "panel"},
        bench.directory());
    QCOMPARE(ended.status, 1);
    QCOMPARE(ended.errors, QByteArray("drive-bench-panel: there is no display to open it on; set DISPLAY\n"));
}

static const TestClass<tst_CommandRefusals> commandRefusalsTests;
#include "tst_CommandRefusals.moc"
