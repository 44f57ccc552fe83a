// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

/// Commands on a full disk. A limit on the size of files fails in the same place.
class tst_DiskFull : public QObject
{
    Q_OBJECT

private slots:
    void changesNothing_data();
    void changesNothing();
    void saysWhatWasNotPrinted();
};

void tst_DiskFull::changesNothing_data()
{
    QTest::addColumn<int>("unused");
    for (const char *line : {"unplug A", "remove A", "add Pebble", "fault A no-return", "companion install",
             "init --force", "image build Pebble"}) {
        addRow(line);
    }
}

void tst_DiskFull::changesNothing()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const std::string before = bench.content();
    const QString line = QTest::currentDataTag();
    const Ended ended = runProgram(
        "sh", {"-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\" " + line, driveBenchPath()}, bench.directory());
    QCOMPARE(ended.status, 1);
    QVERIFY2(
        ended.errors.contains("cannot write ") && ended.errors.count('\n') == 1, ended.errors.constData());
    QCOMPARE(bench.content(), before);
    QCOMPARE(driveBench(line, bench.directory()).status, 0);
}

/// An answer that is cut short must not pass for one.
void tst_DiskFull::saysWhatWasNotPrinted()
{
    TemporaryBench bench;
    for (const char *line : {"list", "export", "models --json", "--help"}) {
        const Ended ended = runProgram("sh",
            {"-c", "exec \"$0\" " + QString(line) + " >/dev/full", driveBenchPath()}, bench.directory());
        QCOMPARE(ended.errors, QByteArray("drive-bench: cannot print: No space left on device\n"));
        QCOMPARE(ended.status, 1);
    }
}

static const TestClass<tst_DiskFull> diskFullTests;
#include "tst_DiskFull.moc"
