#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

using namespace bench;

/// What drive-bench offers the shells to complete a word with.
class tst_Completion : public QObject
{
    Q_OBJECT

private slots:
    void completes_data();
    void completes();
};

void tst_Completion::completes_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QByteArray>("candidates");
    QTest::newRow("command") << QStringList{"un"} << QByteArray("unplug\n");
    QTest::newRow("second word") << QStringList{"image", ""} << QByteArray("build\ninspect\n");
    QTest::newRow("option") << QStringList{"init", "--f"} << QByteArray("--force\n--from\n");
    QTest::newRow("option without a command") << QStringList{"--v"} << QByteArray("--version\n");
    QTest::newRow("command after an option") << QStringList{"--bench", "/x", "exp"} << QByteArray("export\n");
    QTest::newRow("serial number") << QStringList{"plug", ""} << QByteArray("TV1\nTV2\\x00\n");
    QTest::newRow("start of a serial number") << QStringList{"plug", "TV2"} << QByteArray("TV2\\x00\n");
    QTest::newRow("no second serial number") << QStringList{"plug", "TV1", ""} << QByteArray();
    QTest::newRow("whole command") << QStringList{"remove", "TV1", ""} << QByteArray();
    QTest::newRow("after an option") << QStringList{"replug", "--for", "3", "TV1"} << QByteArray("TV1\n");
    QTest::newRow("after an option with its value")
        << QStringList{"replug", "--for=3", ""} << QByteArray("TV1\nTV2\\x00\n");
    QTest::newRow("value of an option") << QStringList{"replug", "--for", ""} << QByteArray();
    QTest::newRow("another bench") << QStringList{"plug", "--bench", "/nowhere", ""} << QByteArray();
    QTest::newRow("another bench in one word") << QStringList{"plug", "--bench=/nowhere", ""} << QByteArray();
    QTest::newRow("another bench first") << QStringList{"--bench", "/nowhere", "plug", ""} << QByteArray();
    QTest::newRow("fault") << QStringList{"fault", "TV1", "no"} << QByteArray("no-return\n");
    QTest::newRow("fault that is set") << QStringList{"clear", "TV1", ""} << QByteArray("verify-error\n");
    QTest::newRow("fault that another drive has") << QStringList{"clear", "TV2\\x00", ""} << QByteArray();
    QTest::newRow("field") << QStringList{"fault", "TV1", "text", "mod"} << QByteArray("modelName=\n");
    QTest::newRow("value of a fault") << QStringList{"fault", "TV1", "chipset", "m"} << QByteArray();
    QTest::newRow("model") << QStringList{"add", "Lamina S"} << QByteArray("Lamina Slim\nLamina Slim SSD\n");
    QTest::newRow("models") << QStringList{"image", "build", "Pebble", "Skiff G"} << QByteArray("Skiff Go\n");
    QTest::newRow("nonsense") << QStringList{"fly", ""} << QByteArray();
    QTest::newRow("nothing") << QStringList{} << driveBench({"--complete", ""}).output;
}

void tst_Completion::completes()
{
    QFETCH(QStringList, words);
    TemporaryBench bench;
    bench.addOutdated("TV1", "Pebble");
    bench.addOutdated(std::string("TV2\0", 4), "Pebble");
    bench.lifeCycle().setFault("TV1", {FaultKind::VerifyError});
    const std::string before = bench.content();
    const Ended ended = driveBench(QStringList("--complete") + words, bench.directory());
    QCOMPARE(ended.status, 0);
    QCOMPARE(bench.content(), before);
    QTEST(ended.output, "candidates");
}

static const TestClass<tst_Completion> completionTests;
#include "tst_Completion.moc"
