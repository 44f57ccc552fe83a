// SPDX-License-Identifier: MIT
#include "bench/core/Host.h"

#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <filesystem>

#include <sys/stat.h>

using namespace bench;
using namespace std::string_literals;

/// The companion of a bench and the calls of its tools.
class tst_Host : public QObject
{
    Q_OBJECT

private slots:
    void theCompanionIsInstalledOrNot();
    void eachCallIsALine();
    void followsNothingInPlaceOfTheLog();
};

void tst_Host::theCompanionIsInstalledOrNot()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    QVERIFY(!isCompanionInstalled(bench.store()));
    QCOMPARE(refusal([&] { setCompanionInstalled(bench.store(), false); }),
        "the companion is not installed; to install it, use: drive-bench companion install"s);
    setCompanionInstalled(bench.store(), true);
    QVERIFY(isCompanionInstalled(bench.store()));
    QCOMPARE(refusal([&] { setCompanionInstalled(bench.store(), true); }),
        "the companion is installed already; to remove it, use: drive-bench companion uninstall"s);
    setCompanionInstalled(bench.store(), false);
    QVERIFY(!isCompanionInstalled(bench.store()));
}

void tst_Host::eachCallIsALine()
{
    const QTemporaryDir directory;
    logCall(directory.path().toStdString(), {"ls", "/a b", ""});
    logCall(directory.path().toStdString(), {"open", "x\ny"});
    QCOMPARE(
        readFile(directory.filePath("calls.log").toStdString(), 1000), "ls '/a b' ''\nopen 'x'$'\\n''y'\n"s);
    logCall("/nowhere", {"ls"});
}

void tst_Host::followsNothingInPlaceOfTheLog()
{
    for (const QString kind : {"link", "FIFO", "directory"}) {
        const QTemporaryDir directory;
        const std::string log = directory.filePath("calls.log").toStdString();
        const std::string target = directory.filePath("target").toStdString();
        writeFile(target, "dear");
        if (kind == "link") {
            std::filesystem::create_symlink(target, log);
        } else if (kind == "FIFO") {
            QCOMPARE(::mkfifo(log.c_str(), 0600), 0);
        } else {
            std::filesystem::create_directory(log);
        }
        logCall(directory.path().toStdString(), {"ls"});
        QCOMPARE(readFile(target, 100), "dear"s);
    }
}

static const TestClass<tst_Host> hostTests;
#include "tst_Host.moc"
