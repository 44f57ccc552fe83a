#include "bench/core/Companion.h"
#include "bench/core/Files.h"
#include "bench/core/Flash.h"
#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

using namespace bench;

/// What each command of drive-bench does, run as a person runs it.
class tst_Command : public QObject
{
    Q_OBJECT

private slots:
    void makesABench();
    void listsDrives();
    void showsADrive();
    void showsTheLastUpdate();
    void listsModels();
    void addsAndRemovesDrives();
    void addsManyAtOnce();
    void plugsAndRestarts();
    void setsAndClearsEveryFault_data();
    void setsAndClearsEveryFault();
    void takesAnyByteInASerialNumber();
    void buildsAndInspectsImages();
    void installsTheCompanion();
    void watchesChanges();
};

namespace {

QJsonObject jsonOf(const Ended &ended)
{
    return QJsonDocument::fromJson(ended.output).object();
}

bool hasLine(const QByteArray &text, const QString &pattern)
{
    return QRegularExpression('^' + pattern + '$', QRegularExpression::MultilineOption)
        .match(QString::fromUtf8(text))
        .hasMatch();
}

} // namespace

void tst_Command::makesABench()
{
    QTemporaryDir parent;
    const QString path = parent.filePath("new/bench");
    const std::string bench = path.toStdString();
    QCOMPARE(driveBench({"init", "--bench", path, "--rate", "5000"}).output,
        (path + ": a bench with 6 drives\n").toUtf8());
    QCOMPARE(jsonOf(driveBench("list --json", bench)).value("drives").toArray().size(), 6);
    QCOMPARE(jsonOf(driveBench("show TV0001PEBBLE --json", bench)).value("flashRate").toInt(), 5000);
    QCOMPARE(driveBench("init --force --empty", bench).status, 0);
    QCOMPARE(jsonOf(driveBench("list --json", bench)).value("drives").toArray().size(), 0);
}

void tst_Command::listsDrives()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Lamina Slim SSD");
    bench.lifeCycle().unplug("B");
    bench.lifeCycle().setFault("A", {FaultKind::NoReturn});
    const QByteArray text = driveBench("list", bench.directory()).output;
    QVERIFY2(hasLine(text, "A +Pebble +ready +0\\.9 +1 +no-return"), text.constData());
    QVERIFY2(hasLine(text, "B +Lamina Slim SSD +unplugged +0\\.9 +1 +-"), text.constData());
    QVERIFY(text.contains("\nCompanion: not installed\n"));
    const QJsonObject json = jsonOf(driveBench("list --json", bench.directory()));
    QCOMPARE(json.value("bench").toString().toStdString(), bench.directory());
    QCOMPARE(json.value("drives").toArray().at(1).toObject().value("state").toString(), QString("unplugged"));
    QVERIFY(!json.value("host").toObject().value("companionInstalled").toBool(true));
}

void tst_Command::showsADrive()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Bollard Duo (FireWire 800)");
    bench.lifeCycle().setFault("A", textFault(FaultKind::Text, "x\n", "modelName", true));
    const QByteArray text = driveBench("show A", bench.directory()).output;
    for (const char *line : {"serial +A", "bridge +OxSemiFireWire944 \\(chipset 6\\)", "state +ready",
             "running +firmware 0\\.9, configuration 1", "in flash +firmware 0\\.9, configuration 1",
             "volumes +mounted", "fault +text modelName=x\\\\x0A \\(once\\)"}) {
        QVERIFY2(hasLine(text, line), line);
    }
    const QJsonObject json = jsonOf(driveBench("show A --json", bench.directory()));
    QCOMPARE(json.value("record").toObject().value("modelName").toString(), QString("x\n"));
    QCOMPARE(json.value("record").toObject().size(), 12);
}

void tst_Command::showsTheLastUpdate()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::FlashError, 300, true));
    QVERIFY(!driveBench("show A", bench.directory()).output.contains("last update"));
    QVERIFY(!refusal([&] { Flash(bench.store()).run("A", 1, bench.image("Pebble")); }).empty());
    QByteArray text = driveBench("show A", bench.directory()).output;
    QVERIFY2(hasLine(text, "in flash +incomplete, 300 of 3500 bytes written")
            && hasLine(text, "last update +failed: the flash chip reports an error, at [0-9]{2}:[0-9]{2}"),
        text.constData());
    QCOMPARE(jsonOf(driveBench("show A --json", bench.directory())).value("lastUpdate").toString(),
        QString("failed: the flash chip reports an error"));
    QCOMPARE(refusal([&] { Flash(bench.store()).run("A", 1, bench.image("Pebble")); }), std::string());
    text = driveBench("show A", bench.directory()).output;
    QVERIFY2(hasLine(text, "last update +succeeded, at [0-9]{2}:[0-9]{2}"), text.constData());
}

void tst_Command::listsModels()
{
    QCOMPARE(driveBench("models").output.count('\n'), 22);
    const QJsonArray models = jsonOf(driveBench("models --json")).value("models").toArray();
    QCOMPARE(models.size(), 21);
    QCOMPARE(models.at(0).toObject().value("image").toString(), QString("pebble.tfw"));
}

void tst_Command::addsAndRemovesDrives()
{
    TemporaryBench bench;
    QCOMPARE(driveBench({"add", "Skiff Go"}, bench.directory()).output, QByteArray("TV0001SKIFF\n"));
    const QString add = "add Harbour --firmware 1.0 --configuration 2 --chipset 4 --rate 99 --unplugged";
    QCOMPARE(driveBench(add, bench.directory()).output, QByteArray("TV0002HARBOUR\n"));
    const Drive drive = bench.drive("TV0002HARBOUR");
    QCOMPARE(drive.flashFirmware, std::string("1.0"));
    QCOMPARE(drive.flashConfiguration, std::string("2"));
    QCOMPARE(drive.chipset, std::int64_t(4));
    QCOMPARE(drive.flashRate, std::int64_t(99));
    QVERIFY(!drive.plugged);
    QCOMPARE(driveBench("remove TV0001SKIFF", bench.directory()).status, 0);
    QCOMPARE(bench.lifeCycle().drives().size(), std::size_t(1));
    QCOMPARE(driveBench("add Pebble", bench.directory()).output, QByteArray("TV0001PEBBLE\n"));
}

/// Each finds a serial number of its own.
void tst_Command::addsManyAtOnce()
{
    TemporaryBench bench;
    const Ended ended = runProgram("sh",
        {"-c", "for i in 1 2 3 4 5 6 7 8; do \"$0\" add Pebble & done; wait", driveBenchPath()},
        bench.directory());
    QCOMPARE(ended.errors, QByteArray());
    QCOMPARE(bench.lifeCycle().drives().size(), std::size_t(8));
    QVERIFY(ended.output.contains("TV0008PEBBLE\n"));
}

void tst_Command::plugsAndRestarts()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QCOMPARE(driveBench("unplug A", bench.directory()).status, 0);
    QVERIFY(!bench.drive("A").plugged);
    QCOMPARE(driveBench("plug A", bench.directory()).status, 0);
    for (const char *command : {"replug", "power-cycle"}) {
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(driveBench({command, "A", "--for", "1"}, bench.directory()).status, 0);
        QVERIFY(clock.elapsed() >= 1000);
        QVERIFY(bench.drive("A").plugged);
    }
    QCOMPARE(bench.drive("A").powerUps, std::int64_t(4));
}

void tst_Command::setsAndClearsEveryFault_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    for (const FaultDescription &kind : faultDescriptions()) {
        const QString value = kind.takesNumber() ? "0x10"
            : kind.takesText()                   ? "OTHER\\x00"
            : kind.value == FaultValue::Field    ? "serialNumber=\\xFF="
                                                 : "";
        QTest::newRow(kind.name) << QString(kind.name) << value;
        if (kind.isOptional()) {
            QTest::newRow(qPrintable(QString(kind.name) + " without a value")) << QString(kind.name) << "";
        }
    }
}

void tst_Command::setsAndClearsEveryFault()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const QStringList values = value.isEmpty() ? QStringList() : QStringList(value);
    const Ended ended = driveBench(QStringList{"fault", "A", name, "--once"} + values, bench.directory());
    QVERIFY2(ended.status == 0, ended.errors.constData());
    const std::vector<Fault> faults = bench.drive("A").faults;
    QCOMPARE(faults.size(), std::size_t(1));
    QCOMPARE(describe(faults.front().kind).name, name);
    QVERIFY(faults.front().once);
    QVERIFY(value != "0x10" || faults.front().number == 16);
    QVERIFY(driveBench("list", bench.directory()).output.contains(name.toUtf8()));
    QVERIFY(driveBench("show A", bench.directory()).output.contains("fault       " + name.toUtf8()));
    QVERIFY(driveBench("fault --list").output.contains('\n' + name.toUtf8() + ' ')
        || name == faultDescriptions().front().name);
    QCOMPARE(driveBench({"clear", "A", name}, bench.directory()).status, 0);
    QVERIFY(bench.drive("A").faults.empty());
    QCOMPARE(driveBench("clear A", bench.directory()).status, 0);
}

void tst_Command::takesAnyByteInASerialNumber()
{
    TemporaryBench bench;
    QCOMPARE(driveBench("add Pebble --serial a/\\x00\\xff", bench.directory()).output,
        QByteArray("a/\\x00\\xFF\n"));
    QCOMPARE(driveBench("unplug a/\\x00\\xFF", bench.directory()).status, 0);
    QVERIFY(!bench.drive(std::string("a/\0\xff", 4)).plugged);
    QCOMPARE(driveBench("add Pebble --serial \\x", bench.directory()).status, 2);
}

void tst_Command::buildsAndInspectsImages()
{
    QTemporaryDir directory;
    QCOMPARE(driveBench({"image", "build", "--output", directory.path()}).output,
        (directory.path() + ": 21 images\n").toUtf8());
    QCOMPARE(int(QDir(directory.path()).entryList({"*.tfw"}).size()), 21);
    const std::string beside = QFileInfo(driveBenchPath()).path().toStdString();
    for (const Model &model : models()) {
        const QString file = directory.filePath(QString::fromStdString(model.imageName()));
        const QJsonObject json = jsonOf(driveBench({"image", "inspect", file, "--json"}));
        QCOMPARE(json.value("chipset").toInt(), model.chipset);
        QCOMPARE(json.value("firmwareVersion").toString(), QString(model.newestFirmware));
        // What the build laid beside the executable is the same.
        QVERIFY(readFile(file.toStdString(), 1000000) == readFile(beside + '/' + model.imageName(), 1000000));
    }
    const QStringList build{"image", "build", "Pebble", "--firmware", "9.9", "--quiet", "--output"};
    const Ended quiet = driveBench(build + QStringList(directory.path()));
    QCOMPARE(quiet.status, 0);
    QCOMPARE(quiet.output, QByteArray());
    QVERIFY(driveBench({"image", "inspect", directory.filePath("pebble.tfw")}).output.contains("9.9, "));
}

void tst_Command::installsTheCompanion()
{
    TemporaryBench bench;
    QCOMPARE(driveBench("companion install", bench.directory()).status, 0);
    QVERIFY(driveBench("list", bench.directory()).output.contains("Companion: installed, not running"));
    const Ended started = driveBench("companion start", bench.directory());
    QVERIFY2(started.status == 0, started.errors.constData());
    QCOMPARE(bench.host().state().processes.size(), std::size_t(3));
    QVERIFY(driveBench("list", bench.directory()).output.contains("Companion: installed, running"));
    QCOMPARE(driveBench("companion start", bench.directory()).status, 1);
    QCOMPARE(driveBench("companion stop", bench.directory()).status, 0);
    QCOMPARE(bench.host().state().processes.size(), std::size_t(0));
    QVERIFY(bench.host().state().companionInstalled);
    QCOMPARE(driveBench("companion start", bench.directory()).status, 0);
    QCOMPARE(driveBench("companion uninstall", bench.directory()).status, 0);
    const HostState host = bench.host().state();
    QVERIFY(!host.companionInstalled && !host.serviceSubmitted && !host.extensionInstalled
        && !host.extensionLoaded);
    QCOMPARE(host.processes.size(), std::size_t(0));
}

void tst_Command::watchesChanges()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 7000);
    QProcess watch;
    watch.start(driveBenchPath(), {"watch", "--json", "--bench", QString::fromStdString(bench.directory())});
    QVERIFY(watch.waitForStarted());
    QByteArray seen;
    // Changes are printed once the command is up: the first is repeated until it is seen.
    QTRY_VERIFY((bench.lifeCycle().clearFaults("A"), QTest::qWait(120),
        bench.lifeCycle().setFault("A", {FaultKind::VerifyError}), QTest::qWait(120),
        seen += watch.readAllStandardOutput(), seen.contains("\"verify-error\"")));
    QVERIFY(!refusal([&] { Flash(bench.store()).run("A", 1, bench.image("Pebble")); }).empty());
    QTRY_VERIFY(
        (seen += watch.readAllStandardOutput(), seen.contains("\"failed: the flash chip does not hold")));
    bench.lifeCycle().unplug("A");
    QTRY_VERIFY((seen += watch.readAllStandardOutput(), seen.contains("\"unplugged\"")));
    Companion(bench.store(), bench.directory()).install();
    bench.lifeCycle().remove("A");
    QTRY_VERIFY((seen += watch.readAllStandardOutput(), seen.contains("\"removed\"")));
    watch.terminate();
    QVERIFY(watch.waitForFinished());
    QCOMPARE(watch.exitCode(), 0);
    for (const char *change :
        {"\"being written\"", "\"written\"", "\"last update\"", "\"companion installed\""}) {
        QVERIFY2(seen.contains(change), change);
    }
    for (const QByteArray &line : seen.trimmed().split('\n')) {
        QVERIFY2(QJsonDocument::fromJson(line).object().size() == 4, line.constData());
    }
}

static const TestClass<tst_Command> commandTests;
#include "tst_Command.moc"
