#include "bench/core/Files.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

#include <Asmedia105X.h>
#include <DeviceDiscovery.h>
#include <MacDevice.h>

#include <QCoreApplication>
#include <QFileInfo>

using namespace bench;

/// What a program on the bench says on standard error of what went wrong, and the environment it starts in.
class tst_PlatformReports : public QObject
{
    Q_OBJECT

private slots:
    void reportsEachFailedUpdateOnce_data();
    void reportsEachFailedUpdateOnce();
    void reportsABenchThatIsLostBeforeTheUnmount();
    void reportsAnUnusableBenchOnce_data();
    void reportsAnUnusableBenchOnce();
    void standInsComeFirstOnThePath();
};

namespace {

std::vector<DeviceInfo> discover()
{
    std::vector<DeviceInfo> devices;
    DeviceDiscovery discovery;
    discovery.getTarvoDevice(devices);
    return devices;
}

/// This program on that bench, which then does what its arguments say.
Ended runSelf(const QStringList &arguments, const std::string &benchDirectory)
{
    return runProgram(QCoreApplication::applicationFilePath(), arguments, benchDirectory);
}

} // namespace

void tst_PlatformReports::reportsEachFailedUpdateOnce_data()
{
    QTest::addColumn<QString>("fault"); // of the drive, as drive-bench takes it
    QTest::addColumn<QString>("image");
    QTest::addColumn<QString>("reason"); // an asterisk stands for the path of the image
    const auto row = [](const char *name, const char *fault, const char *image, const char *reason) {
        QTest::newRow(name) << fault << image << reason;
    };
    row("succeeded", "", "pebble.tfw", "");
    row("no image", "", "nothing.tfw", "*: No such file or directory");
    row("name with a line break", "", "a\nb.tfw", "*: No such file or directory");
    row("foreign image", "", "harbour.tfw", "*: is for the bridge Asm1053, not Asm1051");
    row("truncated image", "truncated-image", "pebble.tfw", "*: is truncated: ");
    row("pulled out", "pulled-out 1000", "pebble.tfw", "the drive was pulled out");
    row("flash error", "flash-error 1000", "pebble.tfw", "the flash chip reports an error");
    row("verify error", "verify-error", "pebble.tfw", "the flash chip does not hold what was written");
    row("another bridge", "bridge", "pebble.tfw", "the drive's bridge is Asm1053, not Asm1051");
    row("unplugged", "unplugged", "pebble.tfw", "no such drive is attached");
    row("not there", "removed", "pebble.tfw", "no such drive is attached");
    row("even value", "unmount-returns 2", "pebble.tfw",
        "the volumes were not unmounted, the library returned 2");
    row("odd value", "unmount-returns 3", "pebble.tfw", "");
}

/// A whole update as the program does it: it unmounts the volumes also when the flash has failed.
void tst_PlatformReports::reportsEachFailedUpdateOnce()
{
    QFETCH(QString, fault);
    QFETCH(QString, image);
    QFETCH(QString, reason);
    TemporaryBench bench;
    const std::string serial = "\u00E9\n";
    bench.addOutdated(serial, fault == "bridge" ? "Harbour" : "Pebble");
    if (fault == "unplugged") {
        unplugDrive(bench.store(), serial);
    } else if (fault == "removed") {
        removeDrive(bench.store(), serial);
    } else if (!fault.isEmpty() && fault != "bridge") {
        bench.setFault(serial, fault.toStdString());
    }
    const QString path = QString::fromStdString(bench.imageDirectory()) + '/' + image;
    const Ended ended = runSelf({"update", path}, bench.directory());
    QCOMPARE(ended.output, QByteArray(reason.isEmpty() ? "succeeded" : "failed"));
    const QString line =
        "the update of \\xE9\\x0A failed: " + reason.replace('*', QString(path).replace('\n', "\\x0A"));
    if (reason.isEmpty()) {
        QCOMPARE(ended.errors, QByteArray());
    } else {
        QVERIFY2(
            ended.errors.startsWith(line.toUtf8()) && ended.errors.endsWith('\n'), ended.errors.constData());
        QCOMPARE(ended.errors.count('\n'), 1);
    }
    if (fault != "removed") {
        const QString noted = QString::fromStdString(bench.drive(serial).lastUpdate);
        QCOMPARE(noted,
            reason.isEmpty() ? "succeeded" : QString::fromUtf8(ended.errors).trimmed().section("\\x0A ", 1));
    }
}

void tst_PlatformReports::reportsABenchThatIsLostBeforeTheUnmount()
{
    TemporaryBench bench;
    bench.addOutdated("\u00E9\n");
    const QString image = QString::fromStdString(bench.image("Pebble"));
    const Ended ended = runSelf({"update", image, "lose the bench"}, bench.directory());
    QCOMPARE(ended.output, QByteArray("failed"));
    const std::string line = "the update of \\xE9\\x0A failed: " + bench.directory() + " is no bench";
    QVERIFY2(ended.errors.startsWith(line.c_str()), ended.errors.constData());
    QCOMPARE(ended.errors.count('\n'), 1);
    // The flash that has failed before was reported then.
    const Ended again = runSelf({"update", image, "lose the bench"}, bench.directory());
    QCOMPARE(again.output, QByteArray("failed"));
    QCOMPARE(again.errors.count('\n'), 1);
}

void tst_PlatformReports::reportsAnUnusableBenchOnce_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("line"); // an asterisk stands for the directory of the bench
    QTest::newRow("none") << "none"
                          << "* is no bench that can be read: No such file or directory; make one with: ";
    QTest::newRow("empty directory") << "empty"
                                     << "* is no bench that can be read: No such file or directory; ";
    QTest::newRow("damaged") << "damaged"
                             << "*/bench.sqlite is damaged: ";
    QTest::newRow("link") << "link"
                          << "*/bench.sqlite is a symbolic link, which is not followed; remove it";
    QTest::newRow("damaged drive")
        << "changed"
        << "*/bench.sqlite holds the drive A, which cannot be read: it is damaged; ";
}

void tst_PlatformReports::reportsAnUnusableBenchOnce()
{
    QFETCH(QString, what);
    QFETCH(QString, line);
    QTemporaryDir parent;
    const std::string directory = parent.path().toStdString() + (what == "none" ? "/none" : "");
    const std::string file = directory + "/bench.sqlite";
    TemporaryBench other;
    other.addOutdated("A");
    if (what == "damaged") {
        writeFile(file, std::string(20000, 'x'));
    } else if (what == "link") {
        QVERIFY(QFile::link(
            QString::fromStdString(other.directory() + "/bench.sqlite"), QString::fromStdString(file)));
    } else if (what == "changed") {
        other.execute("UPDATE documents SET document = x'7B7D' WHERE name = x'41'");
    }
    const std::string used = what == "changed" ? other.directory() : directory;
    const Ended ended = runSelf({"discover", "3"}, used);
    QCOMPARE(ended.status, 0);
    QCOMPARE(ended.output, QByteArray("0 0 0 "));
    QVERIFY2(ended.errors.startsWith(line.replace('*', QString::fromStdString(used)).toUtf8()),
        ended.errors.constData());
    QCOMPARE(ended.errors.count('\n'), 1);
    // An update fails, and says so once.
    const Ended updated = runSelf({"update", "/nowhere"}, used);
    QCOMPARE(updated.output, QByteArray("failed"));
    QCOMPARE(updated.errors.count('\n'), 1);
    QVERIFY(what != "damaged" || readFile(file, 100000) == std::string(20000, 'x'));
}

void tst_PlatformReports::standInsComeFirstOnThePath()
{
    const QString tools = QCoreApplication::applicationDirPath() + "/host-tools";
    QCOMPARE(qgetenv("PATH").startsWith(tools.toUtf8() + ':'), QFileInfo(tools).isDir());
    // The environment was there before any test changed it.
    const Ended ended = runSelf({"bench"}, {});
    QCOMPARE(ended.output, (QCoreApplication::applicationDirPath() + "/bench").toUtf8());
}

// Its argument is the number of queries.
static const TestProcess discoverProcess("discover", [](int, char **argv) {
    for (int i = 0; i < std::stoi(argv[1]); ++i) {
        std::printf("%d ", int(discover().size()));
    }
    return 0;
});

// Its arguments are the path of the image and what happens to the bench before the unmount.
static const TestProcess updateProcess("update", [](int argc, char **argv) {
    Asm1051 updater("\xe9\n");
    const int flashed = updater.updateDevice(argv[1]);
    if (argc > 2 && argv[2] == std::string("lose the bench")) {
        QFile::remove(qEnvironmentVariable("TARVO_BENCH") + "/bench.sqlite");
    }
    std::printf("%s", (flashed & updater.macDevice->unmountDisk()) != 0 ? "succeeded" : "failed");
    return 0;
});

static const TestProcess benchProcess("bench", [](int, char **) {
    std::printf("%s", qgetenv("TARVO_BENCH").constData());
    return 0;
});

static const TestClass<tst_PlatformReports> platformReportsTests;
#include "tst_PlatformReports.moc"
