// SPDX-License-Identifier: MIT
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
    void reportsAFailedUpdateOnce();
    void reportsABenchThatIsLostBeforeTheUnmount();
    void reportsAnUnusableBenchOnce();
    void standInsComeFirstOnThePath();
};

namespace {

/// This program on that bench, which then does what its arguments say.
Ended runSelf(const QStringList &arguments, const std::string &benchDirectory)
{
    return runProgram(QCoreApplication::applicationFilePath(), arguments, benchDirectory);
}

} // namespace

/// A whole update as the program does it: it unmounts the volumes also when the flash has failed.
void tst_PlatformReports::reportsAFailedUpdateOnce()
{
    const std::pair<const char *, std::string> reasons[] = {{"slow-probe 0", ""}, {"unmount-returns 3", ""},
        {"flash-error 1000", "the flash chip reports an error"},
        {"unmount-returns 2", "the volumes were not unmounted, the library returned 2"},
        {"no-return", "no such drive is attached"}};
    for (const auto &[fault, reason] : reasons) {
        TemporaryBench bench;
        bench.addOutdated("\u00E9\n");
        bench.setFault("\u00E9\n", fault);
        bench.replug("\u00E9\n");
        const Ended ended =
            runSelf({"update", QString::fromStdString(bench.image("Pebble"))}, bench.directory());
        QCOMPARE(ended.output, QByteArray(reason.empty() ? "succeeded" : "failed"));
        QCOMPARE(ended.errors.toStdString(),
            reason.empty() ? "" : "the update of \\xE9\\x0A failed: " + reason + '\n');
        QCOMPARE(bench.drive("\u00E9\n").lastUpdate, reason.empty() ? "succeeded" : "failed: " + reason);
    }
}

void tst_PlatformReports::reportsABenchThatIsLostBeforeTheUnmount()
{
    TemporaryBench bench;
    bench.addOutdated("\u00E9\n");
    const QStringList arguments{"update", QString::fromStdString(bench.image("Pebble")), "lose the bench"};
    const std::string line = "the update of \\xE9\\x0A failed: " + bench.directory() + " is no bench";
    for (int i = 0; i < 2; ++i) { // the second flash fails, too, which is reported then
        const Ended ended = runSelf(arguments, bench.directory());
        QCOMPARE(ended.output, QByteArray("failed"));
        QVERIFY2(ended.errors.startsWith(line.c_str()), ended.errors.constData());
        QCOMPARE(ended.errors.count('\n'), 1);
    }
}

void tst_PlatformReports::reportsAnUnusableBenchOnce()
{
    TemporaryBench damaged;
    damaged.addOutdated("A");
    damaged.execute("UPDATE documents SET document = x'7B7D' WHERE name = x'41'");
    const std::pair<std::string, std::string> lines[] = {
        {"/nowhere", "/nowhere is no bench that can be read: No such file or directory; make one with: "},
        {damaged.directory(), damaged.file() + " holds the drive A, which cannot be read: it is damaged; "}};
    for (const auto &[directory, line] : lines) {
        const Ended ended = runSelf({"discover", "3"}, directory);
        QCOMPARE(ended.output, QByteArray("0 0 0 "));
        QVERIFY2(ended.errors.startsWith(line.c_str()), ended.errors.constData());
        QCOMPARE(ended.errors.count('\n'), 1);
        const Ended updated = runSelf({"update", "/nowhere"}, directory);
        QCOMPARE(updated.output, QByteArray("failed"));
        QCOMPARE(updated.errors.count('\n'), 1);
    }
}

void tst_PlatformReports::standInsComeFirstOnThePath()
{
    const QString tools = QCoreApplication::applicationDirPath() + "/host-tools";
    QCOMPARE(qgetenv("PATH").startsWith(tools.toUtf8() + ':'), QFileInfo(tools).isDir());
    // The environment was there before any test changed it.
    QCOMPARE(runSelf({"bench"}, {}).output, (QCoreApplication::applicationDirPath() + "/bench").toUtf8());
}

// Its argument is the number of queries.
static const TestProcess discoverProcess("discover", [](int, char **argv) {
    for (int i = 0; i < std::stoi(argv[1]); ++i) {
        std::vector<DeviceInfo> devices(1);
        DeviceDiscovery().getTarvoDevice(devices);
        std::printf("%d ", int(devices.size()));
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
