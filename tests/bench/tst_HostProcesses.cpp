#include "bench/core/Companion.h"
#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

#include <csignal>

#include <unistd.h>

using namespace bench;

/// Processes that stand for the companion's, as the host's tools list them.
class tst_HostProcesses : public QObject
{
    Q_OBJECT

private slots:
    void listRunningProcesses();
    void aKilledProcessIsNoLongerListed();
    void openTheApplications();
    void aProcessThatWasNotHeardOfIsNotListed();
    void processesEndWithTheirBench_data();
    void processesEndWithTheirBench();
};

namespace {

std::string tool()
{
    return hostToolDirectory().toStdString() + "/host-tool";
}

} // namespace

void tst_HostProcesses::listRunningProcesses()
{
    TemporaryBench bench;
    QCOMPARE(shell("ps -ax", bench).output, QByteArray("  PID TTY           TIME CMD\n"));
    QCOMPARE(shell("ps -axcopid,command", bench).output, QByteArray("  PID COMMAND\n"));
    bench.companion().install();
    bench.companion().start(tool());
    const QString all = QString::fromUtf8(shell("ps -ax", bench).output);
    const QString names = QString::fromUtf8(shell("ps -axcopid,command", bench).output);
    const std::vector<Process> processes = bench.host().state().processes;
    QCOMPARE(processes.size(), std::size_t(3));
    for (const Process &process : processes) {
        const QString id = QString::number(process.id);
        const QString command = QString::fromStdString(process.command);
        const QString name = command.section('/', -1);
        QVERIFY2(
            QRegularExpression("^ *" + id + " \\?\\? +[0-9:.]+ " + QRegularExpression::escape(command) + '$',
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
    bench.companion().stop();
    QCOMPARE(shell("ps -ax", bench).output.count('\n'), 1);
    for (const Process &process : processes) {
        QTRY_VERIFY(::kill(static_cast<pid_t>(process.id), 0) != 0);
    }
}

void tst_HostProcesses::aKilledProcessIsNoLongerListed()
{
    TemporaryBench bench;
    bench.companion().startProcess(tool(), "/Applications/Tarvo Quaydesk.app");
    QCOMPARE(
        shell("kill -9 $(ps -axcopid,command | sed -n 's/^ *\\([0-9]*\\) Tarvo Quaydesk.*/\\1/p')", bench)
            .status,
        0);
    QTRY_COMPARE(shell("ps -ax", bench).output.count('\n'), 1);
    // Its number may belong to another process some day: it is not listed again.
    QVERIFY(bench.host().state().processes.empty());
}

void tst_HostProcesses::openTheApplications()
{
    TemporaryBench bench;
    const QString open = "open \"/Applications/Tarvo Quaydesk.app\"";
    QCOMPARE(shell(open, bench).status, 1);
    bench.companion().install();
    QCOMPARE(shell(open, bench).status, 0);
    QCOMPARE(shell(open, bench).status, 0);
    QCOMPARE(
        shell("open \"/Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app\"", bench).status, 0);
    const QByteArray listed = shell("ps -axcopid,command", bench).output;
    QCOMPARE(listed.count(" Tarvo Quaydesk\n"), 1);
    QCOMPARE(listed.count(" QDKStatusItem\n"), 1);
    bench.companion().stop();
}

void tst_HostProcesses::aProcessThatWasNotHeardOfIsNotListed()
{
    TemporaryBench bench;
    // This test's own process is alive, but stands for nothing.
    bench.host().addProcess({::getpid(), "/Applications/Tarvo Quaydesk.app"});
    QCOMPARE(shell("ps -ax", bench).output.count('\n'), 2);
    bench.store().change(
        [&] { bench.store().database().exec("UPDATE processes SET heartbeat = heartbeat - 5001"); });
    QCOMPARE(shell("ps -ax", bench).output.count('\n'), 1);
    QVERIFY(bench.host().beat(::getpid()));
    QCOMPARE(shell("ps -ax", bench).output.count('\n'), 2);
}

void tst_HostProcesses::processesEndWithTheirBench_data()
{
    QTest::addColumn<bool>("replaced");
    QTest::newRow("removed") << false;
    QTest::newRow("made anew") << true;
}

void tst_HostProcesses::processesEndWithTheirBench()
{
    QFETCH(bool, replaced);
    QTemporaryDir parent;
    const QString directory = parent.filePath("bench");
    QCOMPARE(driveBench("init", directory.toStdString()).status, 0);
    std::int64_t id = 0;
    {
        BenchStore store(directory.toStdString());
        Companion(store, directory.toStdString()).startProcess(tool(), "/Applications/Tarvo Quaydesk.app");
        id = Host(store).state().processes.front().id;
    }
    if (replaced) {
        QCOMPARE(driveBench("init --force", directory.toStdString()).status, 0);
    } else {
        QVERIFY(QDir(directory).removeRecursively());
    }
    QTRY_VERIFY(::kill(static_cast<pid_t>(id), 0) != 0);
    QCOMPARE(QDir(directory).exists(), replaced);
}

static const TestClass<tst_HostProcesses> hostProcessesTests;
#include "tst_HostProcesses.moc"
