#include "bench/core/Companion.h"
#include "bench/core/FlashChip.h"
#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace bench;

/// The command drive-bench, run as a person runs it.
class tst_Command : public QObject
{
    Q_OBJECT

private slots:
    void listsItsCommands();
    void everyCommandHasHelpWithAnExample_data();
    void everyCommandHasHelpWithAnExample();
    void wrongUsage_data();
    void wrongUsage();
    void refusals_data();
    void refusals();
    void makesABench();
    void listsDrives();
    void showsADrive();
    void listsModels();
    void addsAndRemovesDrives();
    void plugsAndRestarts();
    void setsAndClearsEveryFault_data();
    void setsAndClearsEveryFault();
    void takesAnyByteInASerialNumber();
    void buildsAndInspectsImages();
    void installsTheCompanion();
    void watchesChanges();
    void changesNothingOnAFullDisk();
    void changesNothingInAReadOnlyFolder();
    void buildsAllImagesOrNone();
    void companionThatCannotStartChangesNothing();
    void saysSoWhenItCannotPrint();
    void panelNeedsADisplay();
    void reportsMalformedFilesAndGoesOn();
    void completes_data();
    void completes();
    void theManualNamesEverything();
};

namespace {

const QStringList AllCommands{"init", "models", "list", "show", "add", "remove", "plug", "unplug", "replug",
    "power-cycle", "fault", "clear", "image build", "image inspect", "companion install",
    "companion uninstall", "companion start", "companion stop", "watch", "panel"};

QJsonObject jsonOf(const Ended &ended)
{
    return QJsonDocument::fromJson(ended.output).object();
}

QStringList optionsInHelp(const QString &command)
{
    QStringList found;
    const QString help = QString::fromUtf8(driveBench(command.split(' ') << "--help", QString()).output);
    for (const QString &line : help.split('\n')) {
        if (line.startsWith("  --")) {
            found.append(line.trimmed().section(' ', 0, 0));
        }
    }
    return found;
}

} // namespace

void tst_Command::listsItsCommands()
{
    const Ended help = driveBench({"--help"}, QString());
    QCOMPARE(help.status, 0);
    for (const QString &command : AllCommands) {
        QVERIFY2(help.output.contains(("\n  " + command + " ").toUtf8()), qPrintable(command));
    }
    const Ended nothing = driveBench({}, QString());
    QCOMPARE(nothing.status, 2);
    QCOMPARE(nothing.output, help.output);
}

void tst_Command::everyCommandHasHelpWithAnExample_data()
{
    QTest::addColumn<QString>("command");
    for (const QString &command : AllCommands) {
        QTest::newRow(qPrintable(command)) << command;
    }
}

void tst_Command::everyCommandHasHelpWithAnExample()
{
    QFETCH(QString, command);
    const Ended help = driveBench(command.split(' ') << "--help", "/nowhere");
    QCOMPARE(help.status, 0);
    QCOMPARE(help.errors, QByteArray());
    QVERIFY(help.output.contains(("Usage: drive-bench " + command + ' ').toUtf8()));
    QVERIFY(help.output.contains("\nExample:\n  drive-bench " + command.toUtf8()));
    QVERIFY(help.output.contains("--bench DIR"));
}

void tst_Command::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    QTest::newRow("command") << QStringList{"fly"} << "there is no command \"fly\"";
    QTest::newRow("half a command") << QStringList{"image"} << "there is no command \"image\"";
    QTest::newRow("option") << QStringList{"list", "--fast"} << "there is no option \"--fast\"";
    QTest::newRow("option value") << QStringList{"list", "--bench"} << "--bench needs a value, DIR";
    QTest::newRow("option number") << QStringList{"replug", "A", "--for", "soon"}
                                   << "--for needs a whole number from 0";
    QTest::newRow("option range") << QStringList{"init", "--rate", "0"}
                                  << "--rate needs a whole number from 1";
    for (const char *command : {"show", "remove", "plug", "unplug", "replug", "power-cycle"}) {
        QTest::newRow(command) << QStringList{command} << QString("%1 needs SERIAL").arg(command);
    }
    QTest::newRow("add") << QStringList{"add"} << "add needs MODEL";
    QTest::newRow("clear") << QStringList{"clear"} << "clear needs SERIAL";
    QTest::newRow("inspect") << QStringList{"image", "inspect"} << "image inspect needs FILE";
    QTest::newRow("too many") << QStringList{"plug", "A", "B"} << "too many arguments, from \"B\" on";
    QTest::newRow("fault") << QStringList{"fault", "A"} << "fault needs SERIAL FAULT";
    QTest::newRow("fault unknown") << QStringList{"fault", "A", "smoke"} << "there is no fault \"smoke\"";
    QTest::newRow("fault without value")
        << QStringList{"fault", "A", "flash-error"} << "flash-error needs a value, BYTES";
    QTest::newRow("fault with value")
        << QStringList{"fault", "A", "no-return", "1"} << "no-return takes no value";
    QTest::newRow("fault number") << QStringList{"fault", "A", "flash-error", "-1"}
                                  << "flash-error needs a whole number from 0";
    QTest::newRow("fault field") << QStringList{"fault", "A", "text", "colour=red"}
                                 << "text needs FIELD=TEXT";
    QTest::newRow("fault escape") << QStringList{"fault", "A", "text", "modelName=\\q"}
                                  << "text needs FIELD=TEXT";
    QTest::newRow("clear unknown") << QStringList{"clear", "A", "smoke"} << "there is no fault \"smoke\"";
    QTest::newRow("image version") << QStringList{"image", "build", "--firmware", QString(33, '1')}
                                   << "--firmware and --configuration take at most 32";
    QTest::newRow("version that no image can hold") << QStringList{"add", "Pebble", "--configuration",
        QString::fromUtf8("\u65E5")} << "--firmware and --configuration take at most 32";
    QTest::newRow("version that is too long") << QStringList{"add", "Pebble", "--firmware", QString(33, '9')}
                                              << "--firmware and --configuration take at most 32";
    QTest::newRow("no name of a fault") << QStringList{"clear", "A", ""} << "there is no fault \"\"";
}

void tst_Command::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const auto before = bench.content();
    const Ended ended = driveBench(arguments, bench.folder());
    QCOMPARE(ended.status, 2);
    QVERIFY2(ended.errors.startsWith(("drive-bench: " + line).toUtf8()), ended.errors.constData());
    QVERIFY(ended.errors.contains("see: drive-bench"));
    QCOMPARE(ended.errors.count('\n'), 1);
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(bench.content(), before);
}

void tst_Command::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    const QString unknown = "there is no drive with that serial number";
    for (const char *command : {"show", "remove", "plug", "unplug", "replug", "power-cycle", "clear"}) {
        QTest::newRow(qPrintable(QString("%1, unknown drive").arg(command)))
            << QStringList{command, "Z"} << unknown;
        QTest::newRow(qPrintable(QString("%1, no bench").arg(command)))
            << QStringList{command, "A", "--bench", "/nowhere"} << "/nowhere is no bench";
    }
    for (const char *line : {"add Pebble", "fault A no-return", "companion install", "companion uninstall",
             "companion start", "companion stop"}) {
        QTest::newRow(qPrintable(QString("%1, no bench").arg(line)))
            << QString(line).split(' ') + QStringList{"--bench", "/no where"}
            << "make one with: drive-bench init --bench '/no where'";
    }
    QTest::newRow("fault, unknown drive") << QStringList{"fault", "Z", "no-return"} << unknown;
    QTest::newRow("plug twice") << QStringList{"plug", "A"} << "it is plugged in already";
    QTest::newRow("model") << QStringList{"add", "Boulder"} << "there is no such model";
    QTest::newRow("serial number taken")
        << QStringList{"add", "Pebble", "--serial", "A"} << "is on the bench";
    QTest::newRow("init twice") << QStringList{"init"} << "add --force";
    QTest::newRow("init below a file")
        << QStringList{"init", "--bench", "/proc/version/bench"} << "cannot make the folder";
    QTest::newRow("list, no bench") << QStringList{"list", "--bench", "/proc"} << "/proc is no bench";
    QTest::newRow("watch, no bench") << QStringList{"watch", "--bench", "/nowhere"} << "is no bench";
    QTest::newRow("build, no folder")
        << QStringList{"image", "build", "--output", "/nowhere"} << "cannot write /nowhere/";
    QTest::newRow("inspect, no file") << QStringList{"image", "inspect", "/nowhere"} << "No such file";
    QTest::newRow("inspect, folder") << QStringList{"image", "inspect", "/"} << "is a folder";
    QTest::newRow("start") << QStringList{"companion", "start"} << "first use: drive-bench companion install";
    QTest::newRow("stop") << QStringList{"companion", "stop"} << "is not running";
    QTest::newRow("uninstall") << QStringList{"companion", "uninstall"} << "is not installed";
}

void tst_Command::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const auto before = bench.content();
    const Ended ended = driveBench(arguments, bench.folder());
    QCOMPARE(ended.status, 1);
    QVERIFY2(ended.errors.startsWith("drive-bench: ") && ended.errors.contains(line.toUtf8()),
        ended.errors.constData());
    QCOMPARE(ended.errors.count('\n'), 1);
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(bench.content(), before);
}

void tst_Command::makesABench()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("new/bench");
    QCOMPARE(driveBench({"init", "--bench", path, "--rate", "5000"}, QString()).status, 0);
    QCOMPARE(jsonOf(driveBench({"list", "--json"}, path)).value("drives").toArray().size(), 6);
    QCOMPARE(jsonOf(driveBench({"show", "TV0001PEBBLE", "--json"}, path)).value("flashRate").toInt(), 5000);
    QCOMPARE(driveBench({"init", "--bench", path, "--force", "--empty"}, QString()).status, 0);
    QCOMPARE(jsonOf(driveBench({"list", "--json"}, path)).value("drives").toArray().size(), 0);
}

void tst_Command::listsDrives()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Lamina Slim SSD");
    QString reason;
    QVERIFY(bench->unplug("B", &reason) && bench->setFault("A", numberFault("no-return"), &reason));
    QElapsedTimer clock;
    clock.start();
    const QString text = QString::fromUtf8(driveBench({"list"}, bench.folder()).output);
    qInfo("drive-bench list: %lld ms", clock.elapsed());
    QVERIFY(QRegularExpression("^A +Pebble +ready +0\\.9 +1 +no-return$", QRegularExpression::MultilineOption)
                .match(text)
                .hasMatch());
    QVERIFY(QRegularExpression(
        "^B +Lamina Slim SSD +unplugged +0\\.9 +1 +-$", QRegularExpression::MultilineOption)
                .match(text)
                .hasMatch());
    QVERIFY(text.contains("\nCompanion: not installed\n"));
    const QJsonObject json = jsonOf(driveBench({"list", "--json"}, bench.folder()));
    QCOMPARE(json.value("drives").toArray().at(1).toObject().value("state").toString(), QString("unplugged"));
    QVERIFY(!json.value("host").toObject().value("companionInstalled").toBool(true));
}

void tst_Command::showsADrive()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Bollard Duo (FireWire 800)");
    QString reason;
    QVERIFY(bench->setFault("A", textFault("text", "x\n", "modelName", true), &reason));
    const QByteArray text = driveBench({"show", "A"}, bench.folder()).output;
    QVERIFY2(text.contains("OxSemiFireWire944 (chipset 6)") && text.contains("text modelName=x\\x0A (once)"),
        text.constData());
    const QJsonObject json = jsonOf(driveBench({"show", "A", "--json"}, bench.folder()));
    QCOMPARE(json.value("record").toObject().value("modelName").toString(), QString("x\n"));
    QCOMPARE(json.value("record").toObject().size(), 12);
}

void tst_Command::listsModels()
{
    QCOMPARE(driveBench({"models"}, QString()).output.count('\n'), 22);
    const QJsonArray models = jsonOf(driveBench({"models", "--json"}, QString())).value("models").toArray();
    QCOMPARE(models.size(), 21);
    QCOMPARE(models.at(0).toObject().value("image").toString(), QString("pebble.tfw"));
}

void tst_Command::addsAndRemovesDrives()
{
    TemporaryBench bench;
    QCOMPARE(driveBench({"add", "Skiff Go"}, bench.folder()).output, QByteArray("TV0001SKIFF\n"));
    const QStringList arguments{"add", "Harbour", "--firmware", "1.0", "--configuration", "2", "--chipset",
        "4", "--rate", "99", "--unplugged"};
    QCOMPARE(driveBench(arguments, bench.folder()).output, QByteArray("TV0002HARBOUR\n"));
    const Drive drive = bench.drive("TV0002HARBOUR");
    QCOMPARE(drive.flashFirmware, QString("1.0"));
    QCOMPARE(drive.flashConfiguration, QString("2"));
    QCOMPARE(drive.chipset, 4);
    QCOMPARE(drive.flashRate, std::int64_t(99));
    QVERIFY(!drive.plugged);
    QCOMPARE(driveBench({"remove", "TV0001SKIFF"}, bench.folder()).status, 0);
    QStringList problems;
    QCOMPARE(int(bench->drives(&problems).size()), 1);
}

void tst_Command::plugsAndRestarts()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QCOMPARE(driveBench({"unplug", "A"}, bench.folder()).status, 0);
    QVERIFY(!bench.drive("A").plugged);
    QCOMPARE(driveBench({"plug", "A"}, bench.folder()).status, 0);
    for (const char *command : {"replug", "power-cycle"}) {
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(driveBench({command, "A", "--for", "1"}, bench.folder()).status, 0);
        QVERIFY(clock.elapsed() >= 1000);
        QVERIFY(bench.drive("A").plugged);
    }
    QCOMPARE(bench.drive("A").powerUps, std::int64_t(4));
}

void tst_Command::setsAndClearsEveryFault_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    for (const FaultKind &kind : faultKinds()) {
        const bool isNumber = kind.value == FaultValue::Number || kind.value == FaultValue::OptionalNumber;
        const bool isText = kind.value == FaultValue::Text || kind.value == FaultValue::OptionalText;
        const QString value = isNumber        ? "0x10"
            : isText                          ? "OTHER\\x00"
            : kind.value == FaultValue::Field ? "serialNumber=\\xFF="
                                              : "";
        QTest::newRow(kind.name) << kind.name << value;
        if (kind.value == FaultValue::OptionalNumber || kind.value == FaultValue::OptionalText) {
            QTest::newRow(qPrintable(QString(kind.name) + " without a value")) << kind.name << "";
        }
    }
}

void tst_Command::setsAndClearsEveryFault()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QStringList arguments{"fault", "A", name};
    if (!value.isEmpty()) {
        arguments << value;
    }
    const Ended ended = driveBench(arguments << "--once", bench.folder());
    QVERIFY2(ended.status == 0, ended.errors.constData());
    const QVector<Fault> faults = bench.drive("A").faults;
    QCOMPARE(int(faults.size()), 1);
    QCOMPARE(faults.first().name, name);
    QVERIFY(faults.first().once);
    QVERIFY(value != "0x10" || faults.first().number == 16);
    QVERIFY(driveBench({"list"}, bench.folder()).output.contains(name.toUtf8()));
    QVERIFY(driveBench({"show", "A"}, bench.folder()).output.contains("fault       " + name.toUtf8()));
    QVERIFY(driveBench({"fault", "--list"}, QString()).output.contains(name.toUtf8()));
    QCOMPARE(driveBench({"clear", "A", name}, bench.folder()).status, 0);
    QVERIFY(bench.drive("A").faults.isEmpty());
    QCOMPARE(driveBench({"clear", "A"}, bench.folder()).status, 0);
}

void tst_Command::takesAnyByteInASerialNumber()
{
    TemporaryBench bench;
    QCOMPARE(driveBench({"add", "Pebble", "--serial", "a/\\x00\\xff"}, bench.folder()).output,
        QByteArray("a/\\x00\\xFF\n"));
    QCOMPARE(driveBench({"unplug", "a/\\x00\\xFF"}, bench.folder()).status, 0);
    QVERIFY(!bench.drive(QString("a/") + QChar(0) + QChar(0xFF)).plugged);
    QCOMPARE(driveBench({"add", "Pebble", "--serial", "\\x"}, bench.folder()).status, 1);
}

void tst_Command::buildsAndInspectsImages()
{
    QTemporaryDir folder;
    QCOMPARE(driveBench({"image", "build", "--output", folder.path()}, QString()).status, 0);
    QCOMPARE(int(QDir(folder.path()).entryList({"*.tfw"}).size()), 21);
    for (const Model &model : models()) {
        const QJsonObject json =
            jsonOf(driveBench({"image", "inspect", folder.filePath(model.imageName()), "--json"}, QString()));
        QCOMPARE(json.value("chipset").toInt(), model.chipset);
        QCOMPARE(json.value("firmwareVersion").toString(), model.newestFirmware);
        // What the build laid beside the executable is the same.
        QByteArray built;
        QByteArray again;
        QString reason;
        QVERIFY2(
            readFile(QFileInfo(driveBenchPath()).path() + '/' + model.imageName(), 1000000, &built, &reason),
            qPrintable(reason));
        QVERIFY(readFile(folder.filePath(model.imageName()), 1000000, &again, &reason));
        QCOMPARE(again, built);
    }
    QCOMPARE(
        driveBench({"image", "build", "Pebble", "--firmware", "9.9", "--output", folder.path()}, QString())
            .status,
        0);
    QVERIFY(
        driveBench({"image", "inspect", folder.filePath("pebble.tfw")}, QString()).output.contains("9.9, "));
}

void tst_Command::installsTheCompanion()
{
    TemporaryBench bench;
    QStringList problems;
    QCOMPARE(driveBench({"companion", "install"}, bench.folder()).status, 0);
    QVERIFY(driveBench({"list"}, bench.folder()).output.contains("Companion: installed, not running"));
    const Ended started = driveBench({"companion", "start"}, bench.folder());
    QVERIFY2(started.status == 0, started.errors.constData());
    QCOMPARE(int(bench->host(&problems).processes.size()), 3);
    QVERIFY(driveBench({"list"}, bench.folder()).output.contains("Companion: installed, running"));
    QCOMPARE(driveBench({"companion", "start"}, bench.folder()).status, 1);
    QCOMPARE(driveBench({"companion", "stop"}, bench.folder()).status, 0);
    QCOMPARE(int(bench->host(&problems).processes.size()), 0);
    QCOMPARE(driveBench({"companion", "start"}, bench.folder()).status, 0);
    QCOMPARE(driveBench({"companion", "uninstall"}, bench.folder()).status, 0);
    QVERIFY(!bench->host(&problems).companionInstalled);
    QCOMPARE(int(bench->host(&problems).processes.size()), 0);
}

void tst_Command::watchesChanges()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 7000);
    QProcess watch;
    watch.start(driveBenchPath(), {"watch", "--json", "--bench", bench.folder()});
    QVERIFY(watch.waitForStarted());
    QByteArray seen;
    QString reason;
    // Changes are printed once the command is up: the first is repeated until it is seen.
    QTRY_VERIFY((bench->clearFault("A", QString(), &reason), QTest::qWait(120),
        bench->setFault("A", numberFault("verify-error"), &reason), QTest::qWait(120),
        seen += watch.readAllStandardOutput(), seen.contains("\"verify-error\"")));
    QVERIFY(!bench->flash("A", 1, bench.image("Pebble"), &reason));
    // By hand, in place.
    QFile file(bench->driveFile("A"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QByteArray edited = file.readAll().replace("\"verify-error\"", "\"never-settles\"");
    QVERIFY(file.seek(0) && file.write(edited) == edited.size());
    file.close();
    QTRY_VERIFY((seen += watch.readAllStandardOutput(), seen.contains("\"never-settles\"")));
    QVERIFY(bench->unplug("A", &reason));
    QTRY_VERIFY((seen += watch.readAllStandardOutput(), seen.contains("\"unplugged\"")));
    QVERIFY(Companion(bench.folder()).install(&reason));
    QVERIFY(bench->remove("A", &reason));
    QTRY_VERIFY((seen += watch.readAllStandardOutput(), seen.contains("\"removed\"")));
    watch.terminate();
    QVERIFY(watch.waitForFinished());
    QCOMPARE(watch.exitCode(), 0);
    QVERIFY2(seen.contains("\"being written\"") && seen.contains("\"written\"")
            && seen.contains("companion installed"),
        seen.constData());
    for (const QByteArray &line : seen.trimmed().split('\n')) {
        QVERIFY2(QJsonDocument::fromJson(line).object().size() == 4, line.constData());
    }
}

void tst_Command::changesNothingOnAFullDisk()
{
    // A limit on the size of files fails in the same place as a full disk.
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const auto before = bench.content();
    QTemporaryDir folder;
    const QStringList lines{"unplug A", "clear A", "replug A", "power-cycle A", "add Pebble",
        "fault A no-return", "companion install", "init --force", "init --bench " + folder.filePath("new"),
        "image build --output " + folder.path()};
    for (const QString &line : lines) {
        const Ended ended = runProgram(
            "sh", {"-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\" " + line, driveBenchPath()}, bench.folder());
        QCOMPARE(ended.status, 1);
        QVERIFY2(ended.errors.contains("cannot write ") && ended.errors.count('\n') == 1,
            ended.errors.constData());
        QCOMPARE(bench.content(), before);
    }
    QVERIFY(!QFileInfo::exists(folder.filePath("new/drives")));
    QVERIFY(QDir(folder.path()).entryList({"*.tfw*"}).isEmpty());
}

void tst_Command::changesNothingInAReadOnlyFolder()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const auto before = bench.content();
    // Root may write anywhere, so that it runs the command as somebody else, from where everybody finds it.
    const QString shared = QFileInfo(bench.folder()).path();
    const QString command = shared + "/drive-bench";
    QVERIFY(QFile::copy(driveBenchPath(), command));
    QStringList start{command};
    if (::geteuid() == 0) {
        start = QStringList{"setpriv", "--reuid=65534", "--clear-groups", command};
    }
    for (const QString &folder : {shared, bench.folder(), bench.folder() + "/drives"}) {
        QCOMPARE(::chmod(folder.toUtf8().constData(), 0555), 0);
    }
    const QStringList lines{"unplug A", "remove A", "add Pebble", "fault A no-return", "clear A",
        "companion install", "init --force", "init --bench " + shared + "/new",
        "image build --output " + shared};
    for (const QString &line : lines) {
        const QStringList words = start + line.split(' ');
        const Ended ended = runProgram(words.first(), words.mid(1), bench.folder());
        QVERIFY2(ended.status == 1, qPrintable(line));
        QVERIFY2(ended.errors.contains(": Permission denied; ") && ended.errors.count('\n') == 1,
            ended.errors.constData());
        QCOMPARE(bench.content(), before);
    }
    const QStringList list = start + QStringList{"list"};
    QVERIFY(runProgram(list.first(), list.mid(1), bench.folder()).output.contains("Pebble"));
    for (const QString &folder : {shared, bench.folder(), bench.folder() + "/drives"}) {
        QCOMPARE(::chmod(folder.toUtf8().constData(), 0755), 0);
    }
    QVERIFY(!QFileInfo::exists(shared + "/new"));
}

void tst_Command::buildsAllImagesOrNone()
{
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkpath("skiff.tfw/x"));
    const Ended ended = driveBench({"image", "build", "--output", folder.path()}, QString());
    QCOMPARE(ended.status, 1);
    QVERIFY2(ended.errors.contains("skiff.tfw: it is a folder"), ended.errors.constData());
    QCOMPARE(
        QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("skiff.tfw"));
}

void tst_Command::companionThatCannotStartChangesNothing()
{
    TemporaryBench bench;
    QString reason;
    QVERIFY(Companion(bench.folder()).install(&reason));
    const auto before = bench.content();
    const QString command = QFileInfo(bench.folder()).path() + "/drive-bench";
    QVERIFY(QFile::copy(driveBenchPath(), command));
    const Ended ended = runProgram(command, {"companion", "start"}, bench.folder());
    QCOMPARE(ended.status, 1);
    QVERIFY2(ended.errors.contains("it must lie in the folder host-tools beside drive-bench"),
        ended.errors.constData());
    QCOMPARE(bench.content(), before);
}

void tst_Command::saysSoWhenItCannotPrint()
{
    TemporaryBench bench;
    for (const char *line : {"list", "list --json", "models", "fault --list", "--help"}) {
        const Ended ended = runProgram(
            "sh", {"-c", "exec \"$0\" " + QString(line) + " >/dev/full", driveBenchPath()}, bench.folder());
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors, QByteArray("drive-bench: cannot print: No space left on device\n"));
    }
}

void tst_Command::panelNeedsADisplay()
{
    TemporaryBench bench;
    const Ended ended = runProgram("env",
        {"-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "-u", "QT_QPA_PLATFORM", driveBenchPath(), "panel"},
        bench.folder());
    QCOMPARE(ended.status, 1);
    QCOMPARE(ended.errors, QByteArray("drive-bench-panel: there is no display to open it on; set DISPLAY\n"));
}

void tst_Command::reportsMalformedFilesAndGoesOn()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Pebble");
    QString reason;
    QVERIFY(replaceFile(bench->driveFile("A"), "{}", &reason));
    const Ended list = driveBench({"list"}, bench.folder());
    QCOMPARE(list.status, 0);
    QCOMPARE(list.errors, (bench->driveFile("A") + ":1:1: \"serial\" is missing\n").toUtf8());
    QVERIFY(list.output.contains("\nB "));
    QCOMPARE(driveBench({"show", "A"}, bench.folder()).status, 1);
}

void tst_Command::completes_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QByteArray>("candidates");
    QTest::newRow("command") << QStringList{"un"} << QByteArray("unplug\n");
    QTest::newRow("second word") << QStringList{"image", ""} << QByteArray("build\ninspect\n");
    QTest::newRow("option") << QStringList{"init", "--f"} << QByteArray("--force\n");
    QTest::newRow("serial number") << QStringList{"plug", ""} << QByteArray("TV1\nTV2\\x00\n");
    QTest::newRow("start of a serial number") << QStringList{"plug", "TV2"} << QByteArray("TV2\\x00\n");
    QTest::newRow("no second serial number") << QStringList{"plug", "TV1", ""} << QByteArray();
    QTest::newRow("after an option") << QStringList{"replug", "--for", "3", "TV1"} << QByteArray("TV1\n");
    QTest::newRow("value of an option") << QStringList{"replug", "--for", ""} << QByteArray();
    QTest::newRow("another bench") << QStringList{"plug", "--bench", "/nowhere", ""} << QByteArray();
    QTest::newRow("fault") << QStringList{"fault", "TV1", "no"} << QByteArray("no-return\n");
    QTest::newRow("field") << QStringList{"fault", "TV1", "text", "mod"} << QByteArray("modelName=\n");
    QTest::newRow("model") << QStringList{"add", "Lamina S"} << QByteArray("Lamina Slim\nLamina Slim SSD\n");
    QTest::newRow("models") << QStringList{"image", "build", "Pebble", "Skiff G"} << QByteArray("Skiff Go\n");
    QTest::newRow("nonsense") << QStringList{"fly", ""} << QByteArray();
}

void tst_Command::completes()
{
    QFETCH(QStringList, words);
    TemporaryBench bench;
    bench.addOutdated("TV1", "Pebble");
    bench.addOutdated(QString("TV2") + QChar(0), "Pebble");
    const Ended ended = driveBench(QStringList("--complete") + words, bench.folder());
    QCOMPARE(ended.status, 0);
    QTEST(ended.output, "candidates");
}

void tst_Command::theManualNamesEverything()
{
    QFile file(MANUAL);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll()).remove('\\');
    for (const QString &command : AllCommands) {
        QVERIFY2(manual.contains("B" + command) || manual.contains("B " + command), qPrintable(command));
        for (const QString &option : optionsInHelp(command)) {
            QVERIFY2(manual.contains(option), qPrintable(command + ' ' + option));
        }
    }
    for (const FaultKind &kind : faultKinds()) {
        QVERIFY2(manual.contains(QLatin1String(kind.name)), kind.name);
    }
}

QTEST_GUILESS_MAIN(tst_Command)
#include "tst_Command.moc"
