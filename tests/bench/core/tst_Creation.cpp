// SPDX-License-Identifier: MIT
#include "bench/core/Creation.h"

#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <SQLiteCpp/Database.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

using namespace bench;
using namespace std::string_literals;
namespace fs = std::filesystem;

/// Making a bench, and another in its place.
class tst_Creation : public QObject
{
    Q_OBJECT

private slots:
    void init() { temporary = std::make_unique<QTemporaryDir>(); }
    void makesADirectoryAndABench();
    void isMadeOnceUnlessReplaced();
    void refusesOtherFiles();
    void followsNoLink();
    void whatIsRefusedLeavesEverythingAsItWas();
    void saysWhatCannotBeMade();
    void replacesAtomically();
    void replacesADamagedBench();
    void isMadeWhereAnotherWasCutShort();
    void oneOfManyAtOnceMakesTheBench();

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

void addSamples(Store &store)
{
    for (const Drive &drive : sampleDrives()) {
        addDrive(store, drive);
    }
}

void refuseTheSamples(Store &store)
{
    addSamples(store);
    throw Refused("no");
}

std::string creating(const std::string &directory, bool replace, void (*fill)(Store &) = addSamples)
{
    return refusal([&] { createBench(directory, replace, fill); });
}

int driveCount(const std::string &directory)
{
    return int(allDrives(Store(directory)).size());
}

} // namespace

void tst_Creation::makesADirectoryAndABench()
{
    QCOMPARE(creating(path("a/b/c"), false), ""s);
    QCOMPARE(driveCount(path("a/b/c")), 6);
    for (const QString &name : names("a/b/c")) {
        QVERIFY2(name.startsWith("bench.sqlite") && !name.contains("new"), qPrintable(name));
    }
    QVERIFY(!isCompanionInstalled(Store(path("a/b/c"))));
}

void tst_Creation::isMadeOnceUnlessReplaced()
{
    TemporaryBench bench;
    const std::string empty = bench.content();
    bench.addOutdated("OLD");
    setCompanionInstalled(bench.store(), true);
    logCall(bench.directory(), {"ls"});
    fs::create_directory(bench.directory() + "/images");
    writeFile(bench.directory() + "/images/pebble.tfw", "");
    const std::string before = bench.content();
    QCOMPARE(creating(bench.directory(), false),
        bench.directory() + " is a bench already; to make it anew, add --force");
    QCOMPARE(bench.content(), before);
    QVERIFY(fs::exists(bench.directory() + "/calls.log"));
    QCOMPARE(creating(bench.directory(), true, [](Store &) {}), ""s);
    QCOMPARE(bench.content(), empty); // also for a connection that has it open
    QVERIFY(!fs::exists(bench.directory() + "/calls.log") && !fs::exists(bench.directory() + "/images"));
}

void tst_Creation::refusesOtherFiles()
{
    for (const std::string name :
        {"letter.txt", ".bench.sqlite", "bench.sqlite-journal2", "image", "bench.sqlite"}) {
        const QTemporaryDir directory;
        const std::string file = directory.filePath(name.c_str()).toStdString();
        if (name == "bench.sqlite") { // another program's
            SQLite::Database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
                .exec("CREATE TABLE letters (text)");
        } else {
            writeFile(file, "dear");
        }
        const std::string content = readFile(file, 1 << 20);
        const std::string place = directory.path().toStdString();
        for (const bool replace : {false, true}) {
            QCOMPARE(creating(place, replace),
                place + " holds other files; name a new or an empty directory with --bench");
        }
        QCOMPARE(readFile(file, 1 << 20), content);
    }
}

/// Nothing is read or written at the other end of a link, whether a bench is made beside it or not.
void tst_Creation::followsNoLink()
{
    for (const char *suffix : {"", "-wal", "-shm", ".new", ".new-wal", ".new-journal"}) {
        for (const std::string content : {"", "dear"}) {
            fs::create_directory(path("bench"));
            const std::string link = path("bench/bench.sqlite") + suffix;
            fs::create_symlink(path("target"), link);
            fs::remove(path("target"));
            if (!content.empty()) {
                writeFile(path("target"), content);
            }
            creating(path("bench"), true);
            QCOMPARE(fs::exists(path("target")), !content.empty());
            QVERIFY(content.empty() || readFile(path("target"), 10) == content);
            QVERIFY(fs::is_symlink(link) || driveCount(path("bench")) == 6);
            fs::remove_all(path("bench"));
        }
    }
}

void tst_Creation::whatIsRefusedLeavesEverythingAsItWas()
{
    fs::create_directory(path("kept"));
    QCOMPARE(creating(path("kept"), true, refuseTheSamples), "no"s);
    QCOMPARE(names("kept"), QStringList());
    TemporaryBench bench;
    bench.addOutdated("A");
    const std::string before = bench.content();
    QCOMPARE(creating(bench.directory(), true, refuseTheSamples), "no"s);
    QCOMPARE(bench.content(), before);
}

void tst_Creation::saysWhatCannotBeMade()
{
    const std::string reason = creating("/proc/bench", false);
    QCOMPARE(reason.substr(0, 39), "cannot make the directory /proc/bench: "s);
    QVERIFY2(contains(reason, "; name another with --bench"), reason.c_str());
    writeFile(path("file"), "");
    QCOMPARE(creating(path("file"), true),
        "cannot make the directory " + path("file") + ": Not a directory; name another with --bench");
    fs::create_directories(path("bench/bench.sqlite/dear"));
    QCOMPARE(creating(path("bench"), true).substr(0, 13), "cannot write "s);
    QCOMPARE(names("bench/bench.sqlite"), QStringList("dear"));
}

void tst_Creation::replacesAtomically()
{
    QCOMPARE(creating(path("bench"), false), ""s);
    std::atomic<bool> isDone{false};
    std::thread replacing([&] {
        for (int i = 0; i < 20; ++i) {
            createBench(path("bench"), true, addSamples);
        }
        isDone = true;
    });
    const Store store(path("bench"));
    std::set<int> counts;
    while (!isDone) {
        counts.insert(int(allDrives(store).size()));
        counts.insert(driveCount(path("bench")));
    }
    replacing.join();
    QCOMPARE(counts, std::set<int>{6});
}

void tst_Creation::replacesADamagedBench()
{
    fs::create_directory(path("bench"));
    const std::string file = path("bench/bench.sqlite");
    writeFile(file, std::string(5000, 'x'));
    writeFile(file + "-wal", std::string(5000, 'x'));
    QCOMPARE(creating(path("bench"), false),
        file + " is damaged: file is not a database; make a new bench with: drive-bench init --force");
    QCOMPARE(readFile(file, 10000), std::string(5000, 'x'));
    QCOMPARE(creating(path("bench"), true), ""s);
    QCOMPARE(driveCount(path("bench")), 6);
}

/// What a process leaves that is killed while it makes a bench.
void tst_Creation::isMadeWhereAnotherWasCutShort()
{
    fs::create_directory(path("bench"));
    for (const char *name :
        {"bench/bench.sqlite", "bench/bench.sqlite.new", "bench/bench.sqlite.new-journal"}) {
        writeFile(path(name), "");
    }
    QCOMPARE(creating(path("bench"), false), ""s);
    QCOMPARE(driveCount(path("bench")), 6);
}

void tst_Creation::oneOfManyAtOnceMakesTheBench()
{
    for (int round = 0; round < 10; ++round) {
        const std::string directory = path("bench") + std::to_string(round);
        std::vector<std::string> reasons(8);
        std::vector<std::thread> threads;
        threads.reserve(reasons.size());
        for (std::string &reason : reasons) {
            threads.emplace_back([&reason, &directory] { reason = creating(directory, false); });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }
        QCOMPARE(int(std::count(reasons.begin(), reasons.end(), "")), 1);
        QCOMPARE(int(std::count(reasons.begin(), reasons.end(),
                     directory + " is a bench already; to make it anew, add --force")),
            7);
        QCOMPARE(driveCount(directory), 6);
    }
}

static const TestClass<tst_Creation> creationTests;
#include "tst_Creation.moc"
