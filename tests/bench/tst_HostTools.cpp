#include "bench/core/Companion.h"
#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"

#include <QtTest>

#include <csignal>

#include <sys/types.h>

using namespace bench;

/// The stand-ins for the host's tools, called by the shell as the program calls them.
class tst_HostTools : public QObject
{
    Q_OBJECT

private slots:
    void listTheCompanionWhereItIsInstalled();
    void submitAndRemoveTheService();
    void listRunningProcesses();
    void aKilledProcessIsNoLongerListed();
    void listAndLoadTheKernelExtension();
    void openTheApplications();
    void recordEachCall();
    void handOtherCallsOn();
    void sudoHandsOtherCallsOn();
    void printNoErrorWithoutABench();
};

namespace {

Ended shell(const QString &commands, const TemporaryBench &bench)
{
    return runProgram("sh", {"-c", "PATH=\"$0:$PATH\"; " + commands, hostToolFolder()}, bench.folder());
}

} // namespace

void tst_HostTools::listTheCompanionWhereItIsInstalled()
{
    TemporaryBench bench;
    QString reason;
    QVERIFY(!shell("ls /Library/LaunchDaemons", bench).output.contains("tarvo"));
    QVERIFY(!shell("ls /System/Library/Extensions", bench).output.contains("TarvoKorrin.kext"));
    Ended one = shell("sudo ls /System/Library/Extensions/TarvoKorrin.kext", bench);
    QCOMPARE(one.status, 1);
    QCOMPARE(one.output + one.errors, QByteArray());

    QVERIFY(Companion(bench.folder()).install(&reason));
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

void tst_HostTools::listRunningProcesses()
{
    TemporaryBench bench;
    QString reason;
    QCOMPARE(shell("ps -ax", bench).output, QByteArray("  PID TTY           TIME CMD\n"));
    QCOMPARE(shell("ps -axcopid,command", bench).output, QByteArray("  PID COMMAND\n"));
    QVERIFY(Companion(bench.folder()).install(&reason));
    QVERIFY2(Companion(bench.folder()).start(hostToolFolder() + "/host-tool", &reason), qPrintable(reason));
    const QString all = QString::fromUtf8(shell("ps -ax", bench).output);
    const QString names = QString::fromUtf8(shell("ps -axcopid,command", bench).output);
    QStringList problems;
    const QVector<Process> processes = bench->host(&problems).processes;
    QCOMPARE(int(processes.size()), 3);
    for (const Process &process : processes) {
        const QString id = QString::number(process.id);
        const QString name = process.command.section('/', -1);
        QVERIFY2(QRegularExpression(
                     "^ *" + id + " \\?\\? +[0-9:.]+ " + QRegularExpression::escape(process.command) + '$',
                     QRegularExpression::MultilineOption)
                     .match(all)
                     .hasMatch(),
            qPrintable(all));
        QVERIFY2(QRegularExpression("^ *" + id + ' ' + name + '$', QRegularExpression::MultilineOption)
                     .match(names)
                     .hasMatch(),
            qPrintable(names));
    }
    QVERIFY(QRegularExpression("\n[0-9]+\t0\tcom.tarvo.quaydesk.service\n")
                .match(QString::fromUtf8(shell("launchctl list", bench).output))
                .hasMatch());
    QVERIFY2(Companion(bench.folder()).stop(&reason), qPrintable(reason));
    QCOMPARE(shell("ps -ax", bench).output.count('\n'), 1);
    for (const Process &process : processes) {
        QTRY_VERIFY(::kill(static_cast<pid_t>(process.id), 0) != 0);
    }
}

void tst_HostTools::aKilledProcessIsNoLongerListed()
{
    TemporaryBench bench;
    QString reason;
    QStringList problems;
    QVERIFY(Companion(bench.folder())
                .startProcess(hostToolFolder() + "/host-tool", "/Applications/Tarvo Quaydesk.app", &reason));
    QCOMPARE(
        shell("kill -9 $(ps -axcopid,command | sed -n 's/^ *\\([0-9]*\\) Tarvo Quaydesk.*/\\1/p')", bench)
            .status,
        0);
    QTRY_COMPARE(shell("ps -ax", bench).output.count('\n'), 1);
    // Its number may belong to another process some day: it is not listed again.
    QVERIFY(bench->host(&problems).processes.isEmpty());
}

void tst_HostTools::listAndLoadTheKernelExtension()
{
    TemporaryBench bench;
    QString reason;
    QCOMPARE(shell("kextstat | grep Tarvo", bench).output, QByteArray());
    QCOMPARE(shell("sudo kextload /System/Library/Extensions/TarvoKorrin.kext", bench).status, 1);
    QVERIFY(Companion(bench.folder()).install(&reason));
    QCOMPARE(shell("sudo kextload /System/Library/Extensions/TarvoKorrin.kext", bench).status, 0);
    const QString listed = QString::fromUtf8(shell("sudo kextstat | grep com.Tarvo.Korrin", bench).output);
    QVERIFY2(
        QRegularExpression(
            "^ +[0-9]+ +[0-9]+ 0x[0-9a-f]+ +0x[0-9a-f]+ +0x[0-9a-f]+ +com\\.Tarvo\\.Korrin \\(1\\.2\\.4\\) ")
            .match(listed)
            .hasMatch(),
        qPrintable(listed));
}

void tst_HostTools::openTheApplications()
{
    TemporaryBench bench;
    QString reason;
    const QString open = "open \"/Applications/Tarvo Quaydesk.app\"";
    QCOMPARE(shell(open, bench).status, 1);
    QVERIFY(Companion(bench.folder()).install(&reason));
    QCOMPARE(shell(open, bench).status, 0);
    QCOMPARE(shell(open, bench).status, 0);
    QCOMPARE(
        shell("open \"/Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app\"", bench).status, 0);
    const QByteArray listed = shell("ps -axcopid,command", bench).output;
    QCOMPARE(listed.count(" Tarvo Quaydesk\n"), 1);
    QCOMPARE(listed.count(" QDKStatusItem\n"), 1);
    QVERIFY2(Companion(bench.folder()).stop(&reason), qPrintable(reason));
}

void tst_HostTools::recordEachCall()
{
    TemporaryBench bench;
    shell(
        "ls /Library/LaunchDaemons; sudo launchctl list; open 'a b' \"it's\" '' 2>/dev/null; ps -ax", bench);
    QCOMPARE(bench.content().value("/calls.log"),
        QByteArray("ls /Library/LaunchDaemons\nsudo launchctl list\nopen 'a b' 'it'\\''s' ''\nps -ax\n"));
}

void tst_HostTools::handOtherCallsOn()
{
    TemporaryBench bench;
    const QString file = bench.folder() + "/host.json";
    QCOMPARE(shell("ls " + file, bench).output, (file + '\n').toUtf8());
    QCOMPARE(shell("ls /nowhere-at-all", bench).output, QByteArray());
    QVERIFY(!shell("ls /nowhere-at-all", bench).errors.isEmpty());
    // Where there is no real tool of that name, the shell's own words and status.
    const Ended none = runProgram("sh", {"-c", "PATH=\"$0\"; kextstat -l", hostToolFolder()}, bench.folder());
    QCOMPARE(none.status, 127);
    QCOMPARE(none.errors, QByteArray("kextstat: command not found\n"));
}

void tst_HostTools::sudoHandsOtherCallsOn()
{
    TemporaryBench bench;
    const Ended ended = runProgram(
        "sh", {"-c", "PATH=\"$0\"; sudo touch /tmp/x; sudo; sudo -n ls", hostToolFolder()}, bench.folder());
    QCOMPARE(ended.errors.count("sudo: command not found\n"), 3);
}

void tst_HostTools::printNoErrorWithoutABench()
{
    const QString commands =
        "PATH=\"$0:$PATH\"; ls /Library/LaunchDaemons; sudo launchctl list; ps -ax; kextstat; "
        "sudo launchctl submit -l com.tarvo.quaydesk.service -p x";
    const Ended ended = runProgram("sh", {"-c", commands, hostToolFolder()}, "/nowhere/bench");
    QCOMPARE(ended.status, 0);
    QCOMPARE(ended.errors, QByteArray());
}

QTEST_GUILESS_MAIN(tst_HostTools)
#include "tst_HostTools.moc"
