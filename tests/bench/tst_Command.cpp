// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

#include <filesystem>

#include <signal.h>
#include <sys/stat.h>

using namespace bench;

/// What the commands of drive-bench do and print.
class tst_Command : public QObject
{
    Q_OBJECT

private slots:
    void makesABench();
    void addsAndRemovesDrives();
    void plugsAndUnplugs();
    void aSignalInTheMiddleOfARestartPlugsTheDriveIn();
    void setsAndClearsEachFault();
    void listsAndShowsDrives();
    void listsModelsAndFaults();
    void printsAWholeExportIntoAPipe();
    void nothingReachesATerminalUnescaped();
    void buildsImages();
    void followsNothingInPlaceOfAnImage();
};

namespace {

Json jsonOf(const QString &line, const TemporaryBench &bench)
{
    return Json::parse(driveBench(line, bench.directory()).output.toStdString());
}

/// The lines with one space for each run of them.
QStringList lines(const QString &line, const TemporaryBench &bench)
{
    const QString output = QString::fromUtf8(driveBench(line, bench.directory()).output);
    return QString(output).replace(QRegularExpression(" +"), " ").split('\n');
}

} // namespace

void tst_Command::makesABench()
{
    const QTemporaryDir parent;
    const QString path = parent.filePath("a/bench");
    const std::string bench = path.toStdString();
    QCOMPARE(driveBench({"init", "--bench", path, "--rate", "5000"}).output,
        (path + ": a bench with 6 drives\n").toUtf8());
    for (const Drive &drive : allDrives(Store(bench))) {
        QCOMPARE(drive.flashRate, std::int64_t(5000));
    }
    driveBench("add Pebble", bench);
    driveBench("companion install", bench);
    QVERIFY(isCompanionInstalled(Store(bench)));
    const QByteArray document = driveBench("export", bench).output;
    writeFile(parent.filePath("file").toStdString(), document.toStdString());
    QCOMPARE(driveBench("init", bench).status, 1);
    QCOMPARE(driveBench("init --force --empty", bench).output, (path + ": a bench with 0 drives\n").toUtf8());
    QCOMPARE(driveBench({"init", "--force", "--from", parent.filePath("file")}, bench).output,
        (path + ": a bench with 7 drives\n").toUtf8());
    QCOMPARE(driveBench("export", bench).output, document);
    QCOMPARE(driveBench("companion uninstall", bench).status, 0);
    QVERIFY(!isCompanionInstalled(Store(bench)));
}

void tst_Command::addsAndRemovesDrives()
{
    TemporaryBench bench;
    QCOMPARE(driveBench({"add", "Skiff Go"}, bench.directory()).output, QByteArray("TV0001SKIFF\n"));
    const QString add = "add Harbour --firmware 1.0 --configuration 2 --chipset 4 --rate 99 --unplugged";
    QCOMPARE(driveBench(add, bench.directory()).output, QByteArray("TV0002HARBOUR\n"));
    const Drive drive = bench.drive("TV0002HARBOUR");
    QCOMPARE(drive.flashFirmware + ' ' + drive.flashConfiguration, std::string("1.0 2"));
    QVERIFY(drive.chipset == 4 && drive.flashRate == 99 && !drive.plugged);
    QCOMPARE(driveBench("remove TV0001SKIFF", bench.directory()).status, 0);
    QCOMPARE(driveBench("add Pebble", bench.directory()).output, QByteArray("TV0001PEBBLE\n"));
    QCOMPARE(
        driveBench("add Pebble --serial \\xE9\\x00", bench.directory()).output, QByteArray("\\xE9\\x00\n"));
    QCOMPARE(int(allDrives(bench.store()).size()), 3);
    // Of several at once each finds a serial number of its own.
    const QString loop = "for i in 1 2 3 4 5 6; do \"$0\" add Pebble & done; wait";
    QCOMPARE(runProgram("sh", {"-c", loop, driveBenchPath()}, bench.directory()).errors, QByteArray());
    QCOMPARE(int(allDrives(bench.store()).size()), 9);
}

void tst_Command::plugsAndUnplugs()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    QCOMPARE(driveBench("unplug A", bench.directory()).status, 0);
    QVERIFY(!bench.drive("A").plugged);
    QCOMPARE(driveBench("plug A", bench.directory()).status, 0);
    for (const char *command : {"replug", "power-cycle"}) {
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(driveBench({command, "A", "--for", "1"}, bench.directory()).status, 0);
        QVERIFY2(clock.elapsed() >= 1000 && clock.elapsed() < 2500, command);
        const Drive drive = bench.drive("A");
        QVERIFY(drive.plugged && drive.pluggedAt - drive.unpluggedAt >= 1000);
    }
    QCOMPARE(bench.drive("A").powerUps, std::int64_t(4));
}

void tst_Command::aSignalInTheMiddleOfARestartPlugsTheDriveIn()
{
    for (const int number : {SIGTERM, SIGHUP, SIGINT}) {
        TemporaryBench bench;
        bench.addOutdated("A");
        QProcess process;
        process.start(driveBenchPath(),
            {"replug", "A", "--bench", QString::fromStdString(bench.directory()), "--for", "60"});
        QTRY_VERIFY(!bench.drive("A").plugged);
        ::kill(pid_t(process.processId()), number);
        QVERIFY(process.waitForFinished(5000));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit); // ended by the signal, as a shell expects
        QVERIFY(bench.drive("A").plugged);
    }
}

void tst_Command::setsAndClearsEachFault()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    for (const FaultDescription &kind : faultDescriptions()) {
        QStringList words{"fault", "A", kind.name, kind.example, "--once"};
        words.removeAll(QString());
        const Ended ended = driveBench(words, bench.directory());
        QVERIFY2(ended.status == 0, ended.errors.constData());
        const std::string text = faultText(bench.drive("A").faults.at(0));
        QCOMPARE(text, faultText({kind.kind, kind.example, true}));
        QVERIFY(lines("show A", bench).contains("fault " + QString::fromStdString(text)));
        QVERIFY(lines("list", bench).contains(QString("A Pebble ready 0.9 1 ") + kind.name));
        QCOMPARE(driveBench({"clear", "A", kind.name}, bench.directory()).status, 0);
        QVERIFY(bench.drive("A").faults.empty());
    }
    driveBench("fault A flash-error 0x10", bench.directory());
    driveBench({"fault", "A", "report", "modelName=\\xE9"}, bench.directory());
    QCOMPARE(Json(bench.drive("A").faults).dump(),
        std::string(R"([{"fault":"flash-error","once":false,"value":"0x10"},)"
                    R"({"fault":"report","once":false,"value":"modelName=é"}])"));
    QCOMPARE(driveBench("clear A", bench.directory()).status, 0);
    QVERIFY(bench.drive("A").faults.empty());
}

void tst_Command::listsAndShowsDrives()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Lamina Slim SSD");
    bench.addOutdated("B", "Bollard Duo (FireWire 800)");
    bench.setFault("A", "new-serial N");
    bench.replug("A");
    unplugDrive(bench.store(), "A");
    QStringList list = lines("list", bench);
    QVERIFY2(list.contains("A Lamina Slim SSD unplugged 0.9 1 new-serial"), qPrintable(list.join('\n')));
    QVERIFY(list.contains("B Bollard Duo (FireWire 800) ready 0.9 1 -"));
    QVERIFY(list.contains("Companion: not installed"));
    setCompanionInstalled(bench.store(), true);
    QVERIFY(lines("list", bench).contains("Companion: installed"));
    const QStringList drive = lines("show B", bench);
    for (const char *line :
        {"serial B", "model Bollard Duo (FireWire 800) (FireWire, two-bay with FireWire ports)",
            "bridge OxSemiFireWire944 (chipset 6)", "restart not needed", "state ready",
            "running firmware 0.9, configuration 1", "in flash firmware 0.9, configuration 1",
            "image bollard-duo-firewire-800.tfw, firmware 1.54",
            "statuses firmware update required (1), configuration update required (1)", "volumes mounted",
            "flash rate 1000000000 bytes a second"}) {
        QVERIFY2(drive.contains(line), qPrintable(line + ("\n" + drive.join('\n'))));
    }
    QVERIFY(!drive.join(' ').contains("last update") && !drive.join(' ').contains("goes by"));
    QVERIFY(lines("show A", bench).contains("goes by N"));
    // A flash that was cut short, in both.
    bench.setFault("A", "flash-error 300");
    plugDrive(bench.store(), "A");
    bench.flash("N", 3, "lamina-slim-ssd.tfw");
    const QString cut = lines("show A", bench).join('\n');
    QVERIFY2(cut.contains(QRegularExpression("in flash incomplete, 300 of [0-9]+ bytes written\n")),
        qPrintable(cut));
    QVERIFY(cut.contains(
        QRegularExpression("last update failed: the flash chip reports an error, at [0-9]{2}:[0-9]{2}\n")));
    QVERIFY(lines("list", bench).contains("A Lamina Slim SSD boot ROM none none new-serial, flash-error"));
    bench.edit("A", [](Drive &edited) { edited.heartbeat = 1; });
    QVERIFY(lines("show A", bench).join('\n').contains("last update interrupted, at "));

    const Json shown = jsonOf("show B --json", bench);
    QCOMPARE(
        shown["record"]["firmwareFileName"].get<std::string>(), std::string("bollard-duo-firewire-800.tfw"));
    QCOMPARE(shown["state"].get<std::string>(), std::string("ready"));
    const Json listed = jsonOf("list --json", bench);
    QCOMPARE(listed["drives"][1].dump(), shown.dump());
    QCOMPARE(listed["host"]["companionInstalled"].get<bool>(), true);
    QCOMPARE(listed["bench"].get<std::string>(), bench.directory());
    Json stored = jsonOf("export", bench)["drives"][1];
    stored["record"] = shown["record"];
    stored["state"] = shown["state"];
    QCOMPARE(stored.dump(), shown.dump());
}

void tst_Command::listsModelsAndFaults()
{
    TemporaryBench bench;
    const QStringList list = lines("models", bench);
    const Json json = jsonOf("models --json", bench)["models"];
    QCOMPARE(json.size(), models().size());
    for (std::size_t i = 0; i < json.size(); ++i) {
        const Model &model = models()[i];
        QCOMPARE(json[i]["name"].get<std::string>(), std::string(model.name));
        QCOMPARE(json[i]["image"].get<std::string>(), model.imageName());
        QVERIFY(list.filter(model.imageName().c_str()).first().startsWith(model.name));
    }
    const QStringList faults = lines("fault --list", bench);
    const Json kinds = jsonOf("fault --list --json", bench)["faults"];
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        const FaultDescription &kind = faultDescriptions()[i];
        QVERIFY(kinds[i]["fault"] == kind.name && kinds[i]["value"] == kind.valueName);
        QVERIFY(faults.at(int(i)).startsWith(kind.name) && faults.at(int(i)).endsWith(kind.description));
    }
}

void tst_Command::printsAWholeExportIntoAPipe()
{
    TemporaryBench bench;
    bench.store().change([&] {
        for (int i = 0; i < 200; ++i) {
            bench.store().insert(drive("A" + std::to_string(i)));
        }
    });
    const QByteArray output = driveBench("export", bench.directory()).output;
    QVERIFY(output.size() > 2 * 65536);
    QCOMPARE(output.toStdString(), bench.content());
}

/// Whatever a drive or a document has brought.
void tst_Command::nothingReachesATerminalUnescaped()
{
    TemporaryBench bench;
    const std::string odd = "\x1B[2J\n\x7F\u0080\u009B\u00E9";
    bench.addOutdated(odd);
    bench.edit(odd, [&odd](Drive &drive) {
        drive.lastUpdate = "failed: " + odd + "\u65E5";
        drive.runningFirmware = drive.flashConfiguration = odd;
        drive.faults = {fault("report modelName=" + odd), fault("report firmwareFileName=" + odd),
            fault("report newFirmwareVersion=" + odd), fault("new-serial " + odd)};
    });
    bench.replug(odd);
    const QString serial = QString::fromStdString(escaped(odd));
    const QString raw = QString::fromStdString(odd);
    for (const QStringList &words : {QStringList{"list"}, {"list", "--json"}, {"export"}, {"show", serial},
             {"show", serial, "--json"}, {"show", raw}, {"unplug", raw}, {"add", raw}, {"fault", serial, raw},
             {"image", "build", raw}, {raw}, {"list", raw}, {"--bench", raw, "list"}, {"list", "--" + raw}}) {
        const Ended ended = driveBench(words, bench.directory());
        const QString all = QString::fromUtf8(ended.output + ended.errors);
        QVERIFY2(!all.contains(QRegularExpression("[\\x00-\\x09\\x0B-\\x1F\\x7F-\\x9F]")),
            qPrintable(words.join(' ')));
        QVERIFY2(ended.errors.count('\n') == (ended.status == 0 ? 0 : 1), qPrintable(words.join(' ')));
    }
}

void tst_Command::buildsImages()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const QByteArray own = QByteArray::fromStdString(bench.directory() + "/images");
    QCOMPARE(driveBench("image build Pebble --firmware 7.0 --configuration 8", bench.directory()).output,
        own + ": 1 images\n");
    QCOMPARE(bench.record("A").newFirmwareVersion, std::string("7.0"));
    QCOMPARE(readImage((own + "/pebble.tfw").toStdString()).configuration, std::string("8"));
    const QTemporaryDir directory;
    QCOMPARE(driveBench({"image", "build", "--output", directory.path()}).status, 0);
    QCOMPARE(QDir(directory.path()).entryList(QDir::Files).size(), int(models().size()));
    QVERIFY(QDir(directory.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot)
        == QDir(directory.path()).entryList({"*.tfw"}));
    QCOMPARE(readImage(directory.filePath("skiff.tfw").toStdString()).firmware, std::string("2.11"));
}

void tst_Command::followsNothingInPlaceOfAnImage()
{
    for (const bool isLink : {true, false}) {
        const QTemporaryDir directory;
        const std::string image = directory.filePath("skiff.tfw").toStdString();
        const std::string target = directory.filePath("target").toStdString();
        writeFile(target, "dear");
        if (isLink) {
            std::filesystem::create_symlink(target, image);
        } else {
            QCOMPARE(::mkfifo(image.c_str(), 0600), 0);
        }
        QCOMPARE(driveBench({"image", "build", "Skiff", "--output", directory.path()}).status, 0);
        QCOMPARE(readFile(target, 10), std::string("dear"));
        QCOMPARE(readImage(image).bridge, std::int64_t(1));
    }
}

static const TestClass<tst_Command> commandTests;
#include "tst_Command.moc"
