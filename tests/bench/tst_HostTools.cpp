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

/// The stand-ins for the host's tools, called by the shell as the program calls them.
class tst_HostTools : public QObject
{
    Q_OBJECT

private slots:
    void listTheCompanionWhereItIsInstalled();
    void submitAndRemoveTheService();
    void listAndLoadTheKernelExtension();
    void recordEachCall();
    void handOtherCallsOn();
    void sudoHandsOtherCallsOn();
    void answerWithoutAUsableBench_data();
    void answerWithoutAUsableBench();
    void answerOnAReadOnlyBench();
    void theToolItselfIsNotCalled();
};

namespace {

/// What the program asks of the host.
const QString Queries =
    "ls /Library/LaunchDaemons; ls /System/Library/Extensions; sudo launchctl list; ps -ax; "
    "ps -axcopid,command; kextstat";

/// The bench in these directories may be read by everybody and written by nobody, but by root.
Ended queriesByAnotherUser(const TemporaryBench &bench)
{
    const QStringList start =
        ::geteuid() == 0 ? QStringList{"setpriv", "--reuid=65534", "--clear-groups"} : QStringList();
    const QString parent = QFileInfo(QString::fromStdString(bench.directory())).path();
    for (const char *name : {"launchctl", "ps", "ls", "kextstat", "sudo"}) {
        QFile::copy(hostToolDirectory() + "/host-tool", parent + '/' + name);
    }
    const QStringList words = start + QStringList{"sh", "-c", "PATH=\"$0:$PATH\"; " + Queries, parent};
    return runProgram(words.first(), words.mid(1), bench.directory());
}

} // namespace

void tst_HostTools::listTheCompanionWhereItIsInstalled()
{
    TemporaryBench bench;
    QVERIFY(!shell("ls /Library/LaunchDaemons", bench).output.contains("tarvo"));
    QVERIFY(!shell("ls /System/Library/Extensions", bench).output.contains("TarvoKorrin.kext"));
    Ended one = shell("sudo ls /System/Library/Extensions/TarvoKorrin.kext", bench);
    QCOMPARE(one.status, 1);
    QCOMPARE(one.output + one.errors, QByteArray());

    bench.companion().install();
    QVERIFY(
        shell("ls /Library/LaunchDaemons", bench).output.contains("\ncom.tarvo.quaydesk.service.plist\n"));
    QVERIFY(shell("ls /System/Library/Extensions/", bench).output.contains("\nTarvoKorrin.kext\n"));
    one = shell("sudo ls /System/Library/Extensions/TarvoKorrin.kext", bench);
    QCOMPARE(one.status, 0);
    QCOMPARE(one.output, QByteArray("Contents\n"));
}

void tst_HostTools::submitAndRemoveTheService()
{
    TemporaryBench bench;
    const QString submit = "sudo launchctl submit -l com.tarvo.quaydesk.service -p "
                           "/Library/Application\\ Support/Tarvo/Quaydesk/tarvo_qd_service";
    const QByteArray line = "\n-\t0\tcom.tarvo.quaydesk.service\n";
    Ended list = shell("launchctl list", bench);
    QVERIFY(list.output.startsWith("PID\tStatus\tLabel\n") && !list.output.contains("tarvo"));
    const Ended submitted = shell(submit, bench);
    QCOMPARE(submitted.status, 0);
    QCOMPARE(submitted.output + submitted.errors, QByteArray());
    QVERIFY(shell("sudo launchctl list", bench).output.contains(line));
    QCOMPARE(shell("sudo launchctl remove com.tarvo.quaydesk.service", bench).status, 0);
    QVERIFY(!shell("sudo launchctl list", bench).output.contains("tarvo"));
}

void tst_HostTools::listAndLoadTheKernelExtension()
{
    TemporaryBench bench;
    QCOMPARE(shell("kextstat | grep Tarvo", bench).output, QByteArray());
    QCOMPARE(shell("sudo kextload /System/Library/Extensions/TarvoKorrin.kext", bench).status, 1);
    bench.companion().install();
    QCOMPARE(shell("sudo kextload /System/Library/Extensions/TarvoKorrin.kext", bench).status, 0);
    const QString listed = QString::fromUtf8(shell("sudo kextstat | grep com.Tarvo.Korrin", bench).output);
    QVERIFY2(
        QRegularExpression(
            "^ +[0-9]+ +[0-9]+ 0x[0-9a-f]+ +0x[0-9a-f]+ +0x[0-9a-f]+ +com\\.Tarvo\\.Korrin \\(1\\.2\\.4\\) ")
            .match(listed)
            .hasMatch(),
        qPrintable(listed));
}

void tst_HostTools::recordEachCall()
{
    TemporaryBench bench;
    shell(
        "ls /Library/LaunchDaemons; sudo launchctl list; open 'a b' \"it's\" '' 2>/dev/null; ps -ax", bench);
    QCOMPARE(bench.host().calls(),
        (std::vector<std::string>{
            "ls /Library/LaunchDaemons", "sudo launchctl list", "open 'a b' 'it'\\''s' ''", "ps -ax"}));
}

void tst_HostTools::handOtherCallsOn()
{
    TemporaryBench bench;
    const QString file = QString::fromStdString(bench.directory()) + "/bench.sqlite";
    QCOMPARE(shell("ls " + file, bench).output, (file + '\n').toUtf8());
    QCOMPARE(shell("ls /nowhere-at-all", bench).output, QByteArray());
    QVERIFY(!shell("ls /nowhere-at-all", bench).errors.isEmpty());
    // The real tool gets its arguments as they are, and its exit status comes back.
    QTemporaryDir real;
    const QString script = "#!/bin/sh\nprintf '<%s>' \"$@\"; exit 5\n";
    writeFile(real.filePath("kextstat").toStdString(), script.toStdString());
    QCOMPARE(::chmod(real.filePath("kextstat").toUtf8().constData(), 0755), 0);
    const Ended ended =
        runProgram("sh", {"-c", "PATH=\"$0:$1:$0\"; kextstat -l 'a b' ''", hostToolDirectory(), real.path()},
            bench.directory());
    QCOMPARE(ended.output, QByteArray("<-l><a b><>"));
    QCOMPARE(ended.status, 5);
    // Where there is no real tool of that name, the shell's own words and status.
    const Ended none =
        runProgram("sh", {"-c", "PATH=\"$0\"; kextstat -l", hostToolDirectory()}, bench.directory());
    QCOMPARE(none.status, 127);
    QCOMPARE(none.errors, QByteArray("kextstat: command not found\n"));
}

void tst_HostTools::sudoHandsOtherCallsOn()
{
    TemporaryBench bench;
    const Ended ended = runProgram("sh",
        {"-c", "PATH=\"$0\"; sudo touch /tmp/x; sudo; sudo -n ls", hostToolDirectory()}, bench.directory());
    QCOMPARE(ended.errors.count("sudo: command not found\n"), 3);
}

void tst_HostTools::answerWithoutAUsableBench_data()
{
    QTest::addColumn<QString>("bench");
    for (const char *bench : {"none", "empty file", "damaged"}) {
        QTest::newRow(bench) << bench;
    }
}

/// The answers are those of a host without the companion, and nothing is said of the bench.
void tst_HostTools::answerWithoutAUsableBench()
{
    QFETCH(QString, bench);
    TemporaryBench empty;
    const Ended expected = shell(Queries, empty);
    QTemporaryDir parent;
    const std::string directory = parent.path().toStdString() + (bench == "none" ? "/none" : "");
    const std::string content = bench == "damaged" ? std::string(20000, 'x') : std::string();
    if (bench != "none") {
        writeFile(directory + "/bench.sqlite", content);
    }
    const Ended ended = shell(Queries, directory);
    QCOMPARE(ended.status, 0);
    QCOMPARE(ended.errors, QByteArray());
    QCOMPARE(ended.output, expected.output);
    QCOMPARE(shell("sudo launchctl submit -l com.tarvo.quaydesk.service -p x", directory).status, 0);
    QCOMPARE(shell("kextload /System/Library/Extensions/TarvoKorrin.kext", directory).status, 1);
    QCOMPARE(shell("open '/Applications/Tarvo Quaydesk.app'", directory).status, 1);
    QCOMPARE(shell("ls /", directory).status, 0);
    if (bench != "none") {
        QVERIFY(readFile(directory + "/bench.sqlite", 100000) == content);
    }
}

void tst_HostTools::answerOnAReadOnlyBench()
{
    TemporaryBench bench;
    bench.companion().install();
    bench.host().change([](HostState &state) { state.serviceSubmitted = true; });
    const Ended expected = shell(Queries, bench);
    const std::vector<std::string> calls = bench.host().calls();
    const QByteArray file = QByteArray::fromStdString(bench.directory() + "/bench.sqlite");
    QCOMPARE(::chmod(file.constData(), 0444), 0);
    QCOMPARE(::chmod(bench.directory().c_str(), 0555), 0);
    QCOMPARE(::chmod(QFileInfo(file).dir().filePath("..").toUtf8().constData(), 0755), 0);
    const Ended ended = queriesByAnotherUser(bench);
    QCOMPARE(::chmod(bench.directory().c_str(), 0755), 0);
    QCOMPARE(ended.errors, QByteArray());
    QCOMPARE(ended.output, expected.output);
    QVERIFY(ended.output.contains("com.tarvo.quaydesk.service.plist"));
    QCOMPARE(bench.host().calls(), calls);
}

void tst_HostTools::theToolItselfIsNotCalled()
{
    const Ended ended = runProgram(hostToolDirectory() + "/host-tool", {"list"});
    QCOMPARE(ended.status, 2);
    QCOMPARE(
        ended.errors, QByteArray("host-tool is called by the names of the tools that it stands in for\n"));
}

static const TestClass<tst_HostTools> hostToolsTests;
#include "tst_HostTools.moc"
