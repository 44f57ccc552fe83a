// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

#include <filesystem>

#include <sys/stat.h>

using namespace bench;

/// The stand-ins for the host's tools, called by the shell as the program calls them.
class tst_HostTools : public QObject
{
    Q_OBJECT

private slots:
    void answerWhatTheProgramAsks();
    void logEachCall();
    void handOtherCallsOn();
    void areSkippedInSearchOfTheRealTool_data();
    void areSkippedInSearchOfTheRealTool();
    void answerWithoutAUsableBench_data();
    void answerWithoutAUsableBench();
    void theToolItselfIsNotCalled();
};

namespace {

const QString Submit = "launchctl submit -l com.tarvo.quaydesk.service -p x";

std::string callsOf(const TemporaryBench &bench)
{
    const std::string log = bench.directory() + "/calls.log";
    return std::filesystem::exists(log) ? readFile(log, 10000) : "";
}

/// Makes a tool that prints its arguments and ends with status 5.
void makeTool(const QString &file)
{
    writeFile(file.toStdString(), "#!/bin/sh\nprintf '<%s>' \"$@\"; exit 5\n");
    ::chmod(file.toUtf8().constData(), 0755);
}

} // namespace

void tst_HostTools::answerWhatTheProgramAsks()
{
    TemporaryBench bench;
    const QByteArray line = "com.tarvo.quaydesk.service.plist\n";
    for (const char *call : {"ls /Library/LaunchDaemons", "sudo ls /Library/LaunchDaemons"}) {
        QVERIFY(!shell(call, bench).output.contains(line));
        setCompanionInstalled(bench.store(), true);
        QVERIFY(shell(call, bench).output.contains('\n' + line));
        setCompanionInstalled(bench.store(), false);
    }
    for (const QString &call : {Submit, "sudo " + Submit}) {
        const Ended submitted = shell(call, bench);
        QCOMPARE(submitted.status, 0);
        QCOMPARE(submitted.output + submitted.errors, QByteArray());
    }
}

void tst_HostTools::logEachCall()
{
    TemporaryBench bench;
    shell("ls /Library/LaunchDaemons; sudo launchctl submit; ls 'a b' \"it's\" '' 2>/dev/null", bench);
    QCOMPARE(callsOf(bench),
        std::string("ls /Library/LaunchDaemons\nsudo launchctl submit\nls 'a b' 'it'\\''s' ''\n"));
}

void tst_HostTools::handOtherCallsOn()
{
    TemporaryBench bench;
    const QString file = QString::fromStdString(bench.file());
    QCOMPARE(shell("ls " + file, bench).output, (file + '\n').toUtf8());
    QVERIFY(!shell("ls /nowhere-at-all", bench).errors.isEmpty());
    // The real tool gets its arguments as they are, and its exit status comes back.
    const QTemporaryDir real;
    makeTool(real.filePath("launchctl"));
    for (const QString &path :
        {"$0:" + real.path(), "$0:" + real.path() + ":$0", QString("$0:."), QString("$0::$0")}) {
        const Ended ended = runProgram("sh",
            {"-c", "cd " + real.path() + "; PATH=\"" + path + "\"; launchctl list 'a b' ''",
                hostToolDirectory()},
            bench.directory());
        QCOMPARE(ended.output, QByteArray("<list><a b><>"));
        QCOMPARE(ended.status, 5);
    }
}

void tst_HostTools::areSkippedInSearchOfTheRealTool_data()
{
    QTest::addColumn<QString>("path"); // $0 are the stand-ins, $1 what stands in their second directory
    QTest::addColumn<bool>("isLink");
    addRow("alone", "$0", false);
    addRow("twice", "$0:$0", false);
    addRow("two sets", "$0:$1:$0:$1", false);
    addRow("the other set first", "$1:$0", false);
    addRow("a link to the directory", "$0:$1", true);
}

/// Where there is no real tool, nothing calls itself for ever.
void tst_HostTools::areSkippedInSearchOfTheRealTool()
{
    QFETCH(QString, path);
    QFETCH(bool, isLink);
    TemporaryBench bench;
    const QTemporaryDir parent;
    const QString other = parent.filePath("host-tools");
    if (isLink) {
        QFile::link(hostToolDirectory(), other);
    } else {
        std::filesystem::copy(hostToolDirectory().toStdString(), other.toStdString(),
            std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks);
    }
    const QString calls = "PATH=\"" + path + "\"; launchctl list; sudo -n true; " + Submit;
    const Ended ended = runProgram("sh", {"-c", calls, hostToolDirectory(), other}, bench.directory());
    QCOMPARE(ended.errors, QByteArray("launchctl: command not found\nsudo: command not found\n"));
    QCOMPARE(callsOf(bench), "launchctl list\nsudo -n true\n" + Submit.toStdString() + '\n');
    const Ended none = runProgram("sh", {"-c", "PATH=\"$0\"; launchctl", other}, bench.directory());
    QCOMPARE(none.status, 127);
    // What a real tool starts in turn is answered and handed on as ever.
    makeTool(parent.filePath("launchctl"));
    const QString nested =
        "PATH=\"" + path + ":" + parent.path() + ":$PATH\"; launchctl; ls /Library/LaunchDaemons";
    QVERIFY(runProgram("sh", {"-c", nested, hostToolDirectory(), other}, bench.directory())
                .output.contains(".plist\n"));
}

void tst_HostTools::answerWithoutAUsableBench_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"none", "empty file", "damaged", "read only"}) {
        addRow(kind, kind);
    }
}

/// Nothing is said of the bench.
void tst_HostTools::answerWithoutAUsableBench()
{
    QFETCH(QString, kind);
    const QTemporaryDir parent;
    const std::string directory = parent.path().toStdString() + (kind == "none" ? "/none" : "");
    const std::string file = directory + "/bench.sqlite";
    if (kind == "read only") {
        createBench(directory, false, [](Store &store) { setCompanionInstalled(store, true); });
    } else if (kind != "none") {
        writeFile(file, kind == "damaged" ? std::string(20000, 'x') : "");
    }
    ::chmod(directory.c_str(), 0555);
    const Ended ended = shell("ls /Library/LaunchDaemons; sudo " + Submit + "; ls -d /", directory);
    QCOMPARE(ended.status, 0);
    QCOMPARE(ended.errors, QByteArray());
    QCOMPARE(ended.output.contains("com.tarvo"), kind == "read only");
    QVERIFY(ended.output.endsWith("/\n"));
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
