#include "bench/core/Files.h"
#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <SQLiteCpp/Statement.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

#include <unistd.h>

using namespace bench;

/// Making a bench, and another in its place.
class tst_BenchCreation : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void makesADirectoryAndABench();
    void isMadeOnceUnlessReplaced();
    void aReplacementHoldsNothingOfTheFormer();
    void refusesOtherFiles_data();
    void refusesOtherFiles();
    void followsNoLink_data();
    void followsNoLink();
    void aRefusedBenchLeavesNothing();
    void aRefusedReplacementLeavesTheFormer();
    void saysWhatCannotBeMade();
    void replacesAtomically();
    void replacesADamagedBench();
    void isMadeWhereAnotherWasCutShort();
    void twoAtOnceMakeOneBench();

private:
    std::string path(const char *name) const { return temporary->filePath(name).toStdString(); }
    /// The names below the temporary directory, as a person would list them.
    QStringList names(const char *below = ".") const
    {
        return QDir(temporary->filePath(below))
            .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> temporary;
};

namespace {

void addSample(BenchStore &store)
{
    for (const Drive &drive : sampleDrives()) {
        DriveLifeCycle(store).add(drive);
    }
}

void refuseTheSample(BenchStore &store)
{
    addSample(store);
    throw Refused("no");
}

std::string creating(const std::string &directory, bool replace, void (*fill)(BenchStore &) = addSample)
{
    return refusal([&] { BenchStore::create(directory, replace, fill); });
}

std::size_t driveCount(const std::string &directory)
{
    BenchStore store(directory);
    return DriveLifeCycle(store).drives().size();
}

} // namespace

void tst_BenchCreation::init()
{
    temporary = std::make_unique<QTemporaryDir>();
}

void tst_BenchCreation::cleanup()
{
    temporary.reset();
}

void tst_BenchCreation::makesADirectoryAndABench()
{
    QCOMPARE(creating(path("a/b/c"), false), ""s);
    QCOMPARE(driveCount(path("a/b/c")), std::size_t(6));
    for (const QString &name : names("a/b/c")) {
        QVERIFY2(name.startsWith("bench.sqlite"), qPrintable(name)); // and what SQLite keeps beside it
    }
    BenchStore store(path("a/b/c"));
    QCOMPARE(store.database().execAndGet("PRAGMA integrity_check").getString(), "ok"s);
}

void tst_BenchCreation::isMadeOnceUnlessReplaced()
{
    QCOMPARE(creating(path("bench"), false), ""s);
    BenchStore store(path("bench"));
    DriveLifeCycle(store).remove("TV0005SKIFF");
    QCOMPARE(
        creating(path("bench"), false), path("bench") + " is a bench already; to make it anew, add --force");
    QCOMPARE(driveCount(path("bench")), std::size_t(5));
    QCOMPARE(creating(path("bench"), true), ""s);
    QCOMPARE(driveCount(path("bench")), std::size_t(6));
}

void tst_BenchCreation::aReplacementHoldsNothingOfTheFormer()
{
    TemporaryBench bench;
    const std::string empty = bench.content();
    bench.addOutdated("OLD", "Pebble");
    bench.lifeCycle().setFault("OLD", numberFault(FaultKind::NoReturn));
    bench.host().change([](HostState &state) { state.companionInstalled = true; });
    bench.host().logCall({"ls"});
    bench.host().addProcess({::getpid(), "ls"});
    QCOMPARE(creating(bench.directory(), true, [](BenchStore &) {}), ""s);
    QCOMPARE(bench.content(), empty);
    for (const char *table : {"drives", "faults", "chips", "calls", "host", "processes"}) {
        QCOMPARE(bench.store().database().execAndGet("SELECT count(*) FROM "s + table).getInt(), 0);
    }
}

void tst_BenchCreation::refusesOtherFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("replace");
    for (const bool replace : {false, true}) {
        const QByteArray suffix = replace ? ", replaced" : "";
        QTest::newRow("letter" + suffix) << "letter.txt" << replace;
        QTest::newRow("hidden file" + suffix) << ".bench.sqlite" << replace;
        QTest::newRow("journal" + suffix) << "bench.sqlite-journal2" << replace;
        QTest::newRow("directory" + suffix) << "drives/" << replace;
        QTest::newRow("another program's database" + suffix) << "bench.sqlite" << replace;
    }
}

void tst_BenchCreation::refusesOtherFiles()
{
    QFETCH(QString, name);
    QFETCH(bool, replace);
    const std::string file = temporary->filePath(name).toStdString();
    std::string content = "dear";
    if (name == "bench.sqlite") {
        SQLite::Database other(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        other.exec("CREATE TABLE letters (text); INSERT INTO letters VALUES ('dear')");
        content = readFile(file, 1 << 20);
    }
    if (name.endsWith('/')) {
        QVERIFY(std::filesystem::create_directory(file));
    } else {
        writeFile(file, content);
    }
    QCOMPARE(creating(path("."), replace),
        path(".") + " holds other files; name a new or an empty directory with --bench");
    QCOMPARE(names(), QStringList(name.remove('/')));
    QVERIFY(std::filesystem::is_directory(file) || readFile(file, 1 << 20) == content);
}

void tst_BenchCreation::followsNoLink_data()
{
    QTest::addColumn<std::string>("name");
    QTest::addColumn<bool>("isDangling");
    for (const bool isDangling : {false, true}) {
        const std::string suffix = isDangling ? ", dangling" : "";
        QTest::newRow(("database" + suffix).c_str()) << "bench.sqlite"s << isDangling;
        QTest::newRow(("write-ahead log" + suffix).c_str()) << "bench.sqlite-wal"s << isDangling;
        QTest::newRow(("shared memory" + suffix).c_str()) << "bench.sqlite-shm"s << isDangling;
    }
}

void tst_BenchCreation::followsNoLink()
{
    QFETCH(std::string, name);
    QFETCH(bool, isDangling);
    QVERIFY(std::filesystem::create_directory(path("bench")));
    if (!isDangling) {
        writeFile(path("target"), "dear");
    }
    std::filesystem::create_symlink(path("target"), path("bench") + '/' + name);
    for (const bool replace : {false, true}) {
        QCOMPARE(creating(path("bench"), replace),
            path("bench") + '/' + name + " is a symbolic link, which is not followed; remove it");
        QCOMPARE(names(), isDangling ? QStringList("bench") : QStringList({"bench", "target"}));
        QCOMPARE(names("bench"), QStringList(QString::fromStdString(name)));
        QVERIFY(isDangling || readFile(path("target"), 10) == "dear");
    }
}

void tst_BenchCreation::aRefusedBenchLeavesNothing()
{
    QCOMPARE(creating(path("."), false, refuseTheSample), "no"s);
    QCOMPARE(names(), QStringList());
    // Directories that were made for the bench go with it.
    for (const char *name : {"new", "a/b/c"}) {
        QCOMPARE(creating(path(name), false, refuseTheSample), "no"s);
        QCOMPARE(names(), QStringList());
    }
    QVERIFY(std::filesystem::create_directory(path("kept")));
    QCOMPARE(creating(path("kept"), true, refuseTheSample), "no"s);
    QCOMPARE(names(), QStringList("kept"));
    QCOMPARE(names("kept"), QStringList());
}

void tst_BenchCreation::aRefusedReplacementLeavesTheFormer()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    QCOMPARE(creating(bench.directory(), true, refuseTheSample), "no"s);
    QCOMPARE(bench.content(), before);
    BenchStore store(bench.directory());
    QCOMPARE(DriveLifeCycle(store).drive("A").serial, "A"s);
}

void tst_BenchCreation::saysWhatCannotBeMade()
{
    // No directory can be made below one of the kernel's.
    const std::string reason = creating("/proc/bench", false);
    QVERIFY2(reason.rfind("cannot make the directory /proc/bench: ", 0) == 0, reason.c_str());
    QVERIFY2(reason.find("; name another with --bench") != std::string::npos, reason.c_str());
    writeFile(path("file"), "");
    QCOMPARE(creating(path("file"), true),
        "cannot make the directory " + path("file") + ": Not a directory; name another with --bench");
    QVERIFY(std::filesystem::create_directories(path("bench/bench.sqlite")));
    QVERIFY(creating(path("bench"), true).find("bench.sqlite is not a regular file") != std::string::npos);
    QCOMPARE(names("bench"), QStringList("bench.sqlite"));
}

void tst_BenchCreation::replacesAtomically()
{
    QCOMPARE(creating(path("bench"), false), ""s);
    std::atomic<bool> isDone{false};
    std::thread replacing([&] {
        for (int i = 0; i < 20; ++i) {
            BenchStore::create(path("bench"), true, addSample);
        }
        isDone = true;
    });
    BenchStore store(path("bench"));
    std::set<std::size_t> counts;
    while (!isDone) {
        counts.insert(DriveLifeCycle(store).drives().size());
        counts.insert(driveCount(path("bench")));
    }
    replacing.join();
    QCOMPARE(counts, std::set<std::size_t>{6});
}

void tst_BenchCreation::replacesADamagedBench()
{
    // A damaged bench is left alone, even where it would be replaced: who made it may want to rescue it.
    QVERIFY(std::filesystem::create_directory(path("bench")));
    const std::string content(5000, 'x');
    writeFile(path("bench/bench.sqlite"), content);
    for (const bool replace : {false, true}) {
        QCOMPARE(creating(path("bench"), replace),
            path("bench/bench.sqlite")
                + " is damaged: file is not a database; remove it and make a new bench");
        QCOMPARE(readFile(path("bench/bench.sqlite"), 10000), content);
    }
}

/// What a process leaves that is killed while it makes a bench.
void tst_BenchCreation::isMadeWhereAnotherWasCutShort()
{
    QVERIFY(std::filesystem::create_directory(path("bench")));
    writeFile(path("bench/bench.sqlite"), "");
    writeFile(path("bench/bench.sqlite-journal"), "");
    QCOMPARE(creating(path("bench"), false), ""s);
    QCOMPARE(driveCount(path("bench")), std::size_t(6));
}

void tst_BenchCreation::twoAtOnceMakeOneBench()
{
    std::vector<std::string> reasons(2);
    std::vector<std::thread> threads;
    threads.reserve(reasons.size());
    for (std::string &reason : reasons) {
        threads.emplace_back([&reason, this] { reason = creating(path("bench"), false); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    std::sort(reasons.begin(), reasons.end());
    QCOMPARE(reasons.front(), ""s);
    QVERIFY2(reasons.back().find(" is a bench already") != std::string::npos, reasons.back().c_str());
    QCOMPARE(driveCount(path("bench")), std::size_t(6));
}

static const TestClass<tst_BenchCreation> benchCreationTests;

#include "tst_BenchCreation.moc"
