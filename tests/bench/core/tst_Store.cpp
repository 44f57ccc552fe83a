// SPDX-License-Identifier: MIT
#include "bench/core/Store.h"

#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <SQLiteCpp/Database.h>

#include <filesystem>
#include <stdexcept>

#include <sys/stat.h>

using namespace bench;
using namespace std::string_literals;
namespace fs = std::filesystem;

/// Opening the database of a bench, whatever is in its place, and its documents.
class tst_Store : public QObject
{
    Q_OBJECT

private slots:
    void refusesADirectory_data();
    void refusesADirectory();
    void refusesEveryOtherVersion();
    void followsNoLink();
    void refusesADamagedDatabase();
    void nobodyPassesADamagedRow();
    void aDamagedDriveCanBeTakenOff();
};

namespace {

std::string opening(const std::string &directory)
{
    return refusal([&] { const Store store(directory); });
}

} // namespace

void tst_Store::refusesADirectory_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<std::string>("reason");
    addRow("missing", "missing", "No such file or directory"s);
    addRow("file", "file", "Not a directory"s);
    addRow("no bench", "empty", "No such file or directory"s);
    addRow("directory", "directory", "bench.sqlite is not a regular file"s);
    addRow("FIFO", "FIFO", "bench.sqlite is not a regular file"s);
    addRow("empty database", "nothing", "bench.sqlite holds no bench"s);
    addRow("another program's", "other", "bench.sqlite holds no bench"s);
}

void tst_Store::refusesADirectory()
{
    QFETCH(QString, kind);
    QFETCH(std::string, reason);
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString() + "/it's";
    const std::string file = directory + "/bench.sqlite";
    if (kind == "file") {
        writeFile(directory, "");
    } else if (kind != "missing") {
        fs::create_directory(directory);
    }
    if (kind == "directory") {
        fs::create_directory(file);
    } else if (kind == "FIFO") {
        QCOMPARE(::mkfifo(file.c_str(), 0600), 0);
    } else if (kind == "nothing") {
        writeFile(file, "");
    } else if (kind == "other") {
        SQLite::Database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
            .exec("CREATE TABLE letters (text); PRAGMA user_version = 3");
    }
    QCOMPARE(opening(directory),
        directory + " is no bench that can be read: " + reason + "; make one with: drive-bench init --bench '"
            + temporary.path().toStdString() + "/it'\\''s'");
}

void tst_Store::refusesEveryOtherVersion()
{
    TemporaryBench bench;
    for (const char *version : {"-2147483648", "-1", "0", "2", "4", "2147483647"}) {
        bench.execute("PRAGMA user_version = "s + version);
        QCOMPARE(opening(bench.directory()),
            bench.file() + " is a bench of version " + version
                + ", only 3 is known; make a new one with: drive-bench init --force");
    }
}

void tst_Store::followsNoLink()
{
    TemporaryBench bench;
    const std::string before = bench.content();
    for (const std::string name : {"bench.sqlite", "bench.sqlite-wal", "bench.sqlite-shm"}) {
        const QTemporaryDir temporary;
        const std::string other = temporary.path().toStdString();
        createBench(other, false, [](Store &) {});
        fs::remove(fs::path(other) / name);
        fs::create_symlink(fs::path(bench.directory()) / name, fs::path(other) / name);
        QVERIFY2(contains(opening(other), other + "/bench.sqlite"), name.c_str());
        QCOMPARE(bench.content(), before);
    }
    const std::string link = bench.imageDirectory() + "/link";
    fs::create_directory_symlink(bench.directory(), link);
    QCOMPARE(opening(link), ""s);
}

void tst_Store::refusesADamagedDatabase()
{
    // A page that is overwritten there; a negative number: cut to that size.
    for (const int position : {0, 4096, -4096, -100}) {
        TemporaryBench bench;
        bench.addOutdated("A");
        bench.execute("PRAGMA wal_checkpoint(TRUNCATE)");
        std::string content = readFile(bench.file(), 1 << 20);
        QVERIFY(content.size() > 4096);
        if (position < 0) {
            content.resize(std::size_t(-position));
        } else {
            content.replace(std::size_t(position), 4096, std::string(4096, '\x55'));
        }
        writeFile(bench.file(), content);
        fs::remove(bench.file() + "-wal");
        fs::remove(bench.file() + "-shm");
        const std::string reason = refusal([&] { allDrives(Store(bench.directory())); });
        QCOMPARE(reason.substr(0, bench.file().size() + 13), bench.file() + " is damaged: ");
        QVERIFY2(contains(reason, "; make a new bench with: drive-bench init --force"), reason.c_str());
        QCOMPARE(readFile(bench.file(), 1 << 20), content); // left as it is
    }
}

void tst_Store::nobodyPassesADamagedRow()
{
    const std::string row = " holds the drive B, which cannot be read: it is damaged; take it off with: "
                            "drive-bench remove B";
    const std::string whole =
        " is damaged: a document is missing; make a new bench with: drive-bench init --force";
    const std::pair<const char *, std::string> damages[] = {
        {"UPDATE documents SET document = x'7B7D' WHERE name = x'42'", row},
        {"UPDATE documents SET name = x'42' WHERE name = x'43'", row},
        {"UPDATE documents SET checksum = checksum + 1 WHERE name = x'42'", row},
        {"DELETE FROM documents WHERE name = x'42'", whole},
        {"INSERT INTO documents SELECT * FROM documents WHERE name = x'42'", whole},
        {"DELETE FROM documents; UPDATE seal SET total = 0", whole},
        {"UPDATE documents SET checksum = 0 WHERE name = x''",
            " is damaged: the state of the host is not what was written; make a new bench with: drive-bench "
            "init --force"},
        {"DROP TABLE seal", " is damaged: "},
        {"ALTER TABLE documents DROP COLUMN checksum", " is damaged: "}};
    for (const auto &[statement, reason] : damages) {
        TemporaryBench bench;
        for (const char *serial : {"A", "B", "C"}) {
            bench.addOutdated(serial);
        }
        bench.execute(statement);
        const std::string expected = bench.file() + reason;
        const std::function<void()> uses[] = {[&] { bench.drive("A"); }, [&] { allDrives(bench.store()); },
            [&] { unplugDrive(bench.store(), "A"); }, [&] { bench.addOutdated("D"); },
            [&] { setCompanionInstalled(bench.store(), true); }, [&] { bench.query(); },
            [&] { bench.content(); }};
        for (const auto &use : uses) {
            QCOMPARE(refusal(use).substr(0, expected.size()), expected);
        }
    }
}

void tst_Store::aDamagedDriveCanBeTakenOff()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const std::string before = bench.content();
    bench.addOutdated("\u00E9 ");
    bench.execute("UPDATE documents SET document = x'7B7D' WHERE length(name) = 3");
    QVERIFY(contains(refusal([&] { bench.content(); }), "drive-bench remove '\\xE9 '"));
    removeDrive(bench.store(), "\u00E9 ");
    QCOMPARE(bench.content(), before);
}

static const TestClass<tst_Store> storeTests;
#include "tst_Store.moc"
