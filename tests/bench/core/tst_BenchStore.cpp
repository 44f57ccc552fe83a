#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <SQLiteCpp/Statement.h>

#include <filesystem>
#include <stdexcept>

#include <sys/stat.h>

using namespace bench;

/// Opening the database of a bench, whatever is in its place, and the transactions.
class tst_BenchStore : public QObject
{
    Q_OBJECT

private slots:
    void refusesADirectory_data();
    void refusesADirectory();
    void isNotOpenedThroughALink_data();
    void isNotOpenedThroughALink();
    void opensThroughALinkToTheDirectory();
    void refusesADamagedDatabase_data();
    void refusesADamagedDatabase();
    void refusesAfterFiveSeconds();
    void readsOneState();
    void aChangeThatThrowsIsUndone();
    void aChangeInsideAnotherIsAPartOfIt();
    void saysWhichDurabilityItHas();
    void changesShowToOtherConnections();
    void closingDoesNotWaitForTheDisk();
    void othersMayReadTheDatabase();
};

namespace {

std::string opening(const std::string &directory)
{
    return refusal([&] { const BenchStore store(directory); });
}

int sum(const BenchStore &store, const char *query)
{
    return store.database().execAndGet(query).getInt();
}

} // namespace

void tst_BenchStore::refusesADirectory_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<std::string>("reason");
    QTest::newRow("missing") << "missing"
                             << "No such file or directory"s;
    QTest::newRow("file") << "file"
                          << "Not a directory"s;
    QTest::newRow("no bench") << "empty"
                              << "No such file or directory"s;
    QTest::newRow("directory") << "directory"
                               << "bench.sqlite is not a regular file"s;
    QTest::newRow("FIFO") << "fifo"
                          << "bench.sqlite is not a regular file"s;
    QTest::newRow("empty database") << "nothing"
                                    << "bench.sqlite holds no bench"s;
    QTest::newRow("another program's") << "other"
                                       << "bench.sqlite holds no bench"s;
    QTest::newRow("another program's, with a version") << "versioned"
                                                       << "bench.sqlite holds no bench"s;
}

void tst_BenchStore::refusesADirectory()
{
    QFETCH(QString, kind);
    QFETCH(std::string, reason);
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString() + "/it's";
    const std::string file = directory + "/bench.sqlite";
    if (kind == "file") {
        writeFile(directory, "");
    } else if (kind != "missing") {
        QVERIFY(std::filesystem::create_directory(directory));
    }
    if (kind == "directory") {
        QVERIFY(std::filesystem::create_directory(file));
    } else if (kind == "fifo") {
        QCOMPARE(::mkfifo(file.c_str(), 0600), 0);
    } else if (kind == "nothing") {
        writeFile(file, "");
    } else if (kind == "other" || kind == "versioned") {
        SQLite::Database other(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        other.exec("CREATE TABLE letters (text)");
        other.exec(kind == "other" ? "PRAGMA application_id = 7" : "PRAGMA user_version = 2");
    }
    const QStringList before = QDir(temporary.path()).entryList(QDir::AllEntries | QDir::System);
    QCOMPARE(opening(directory),
        directory + " is no bench that can be read: " + reason + "; make one with: drive-bench init --bench "
            + "'" + temporary.path().toStdString() + "/it'\\''s'");
    QCOMPARE(QDir(temporary.path()).entryList(QDir::AllEntries | QDir::System), before);
    QVERIFY(kind != "empty" || std::filesystem::is_empty(directory));
}

void tst_BenchStore::isNotOpenedThroughALink_data()
{
    QTest::addColumn<std::string>("name");
    QTest::newRow("database") << "bench.sqlite"s;
    QTest::newRow("write-ahead log") << "bench.sqlite-wal"s;
    QTest::newRow("shared memory") << "bench.sqlite-shm"s;
}

void tst_BenchStore::isNotOpenedThroughALink()
{
    QFETCH(std::string, name);
    for (const bool isDangling : {false, true}) {
        const QTemporaryDir temporary;
        const std::string directory = temporary.path().toStdString();
        const std::string target =
            directory + "/../" + QFileInfo(directory.c_str()).fileName().toStdString() + "-target";
        BenchStore::create(directory, false, [](BenchStore &) {});
        if (name == "bench.sqlite") {
            std::filesystem::rename(directory + "/bench.sqlite", target);
        } else if (!isDangling) {
            writeFile(target, "dear");
        }
        if (isDangling) {
            std::filesystem::remove(target);
        }
        const std::string link = (std::filesystem::path(directory) / name).string();
        std::filesystem::create_symlink(target, link);
        const std::string content = isDangling ? ""s : readFile(target, 1 << 20);
        QCOMPARE(opening(directory), link + " is a symbolic link, which is not followed; remove it");
        QCOMPARE(std::filesystem::exists(target), !isDangling);
        QVERIFY(isDangling || readFile(target, 1 << 20) == content);
        std::filesystem::remove(target);
    }
}

void tst_BenchStore::opensThroughALinkToTheDirectory()
{
    TemporaryBench bench;
    const std::string link = bench.imageDirectory() + "/link";
    std::filesystem::create_directory_symlink(bench.directory(), link);
    QCOMPARE(opening(link), ""s);
}

void tst_BenchStore::refusesADamagedDatabase_data()
{
    QTest::addColumn<bool>("isTruncated");
    QTest::addColumn<int>("position");
    QTest::newRow("no database") << false << 0;
    QTest::newRow("page with drives") << false << 4096;
    QTest::newRow("truncated to a page") << true << 4096;
    QTest::newRow("truncated to half") << true << 65536;
    QTest::newRow("truncated to a header") << true << 100;
}

void tst_BenchStore::refusesADamagedDatabase()
{
    QFETCH(bool, isTruncated);
    QFETCH(int, position);
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString();
    const std::string file = directory + "/bench.sqlite";
    BenchStore::create(directory, false, [](BenchStore &store) {
        Drive drive;
        drive.serial = "A";
        drive.model = "Pebble";
        DriveLifeCycle(store).add(drive);
    });
    BenchStore(directory).database().exec("PRAGMA wal_checkpoint(TRUNCATE)");
    std::string content = readFile(file, 1 << 20);
    QVERIFY(content.size() > 2 * 65536);
    if (isTruncated) {
        content.resize(static_cast<std::size_t>(position));
    } else {
        content.replace(static_cast<std::size_t>(position), 4096, std::string(4096, '\x55'));
    }
    writeFile(file, content);
    const std::string reason = refusal([&] {
        BenchStore store(directory);
        DriveLifeCycle(store).drives();
        store.read([&store] { sum(store, "SELECT sum(length(hex(content))) FROM chips"); });
    });
    QVERIFY2(reason.rfind(file + " is damaged: ", 0) == 0, reason.c_str());
    QVERIFY2(QByteArray::fromStdString(reason).endsWith("; remove it and make a new bench"), reason.c_str());
    QVERIFY(reason.find('\n') == std::string::npos);
    QCOMPARE(readFile(file, 1 << 20), content); // left as it is
}

void tst_BenchStore::refusesAfterFiveSeconds()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    BenchStore other(bench.directory());
    other.database().exec("BEGIN IMMEDIATE");
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(refusal([&] { bench.lifeCycle().unplug("A"); }),
        bench.directory() + "/bench.sqlite was in use by another process for 5 seconds; try again");
    QVERIFY2(clock.elapsed() >= 4900 && clock.elapsed() < 20000, std::to_string(clock.elapsed()).c_str());
    QVERIFY(bench.drive("A").plugged); // reading waits for nobody
    other.database().exec("ROLLBACK");
    bench.lifeCycle().unplug("A");
    QVERIFY(!bench.drive("A").plugged);
}

void tst_BenchStore::readsOneState()
{
    TemporaryBench bench;
    BenchStore other(bench.directory());
    bench.store().read([&] {
        QCOMPARE(sum(bench.store(), "SELECT count(*) FROM calls"), 0);
        Host(other).restoreCall("ls");
        QCOMPARE(sum(bench.store(), "SELECT count(*) FROM calls"), 0);
    });
    QCOMPARE(bench.host().calls(), std::vector<std::string>{"ls"});
}

void tst_BenchStore::aChangeThatThrowsIsUndone()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    const auto throwing = [&](const std::function<void()> &end) {
        return refusal([&] {
            bench.store().change([&] {
                bench.lifeCycle().unplug("A");
                bench.host().restoreCall("ls");
                end();
            });
        });
    };
    // A refusal, a failure of the database and any other exception alike.
    QCOMPARE(throwing([&] { bench.lifeCycle().unplug("A"); }),
        "it is unplugged already; to plug it in, use: drive-bench plug"s);
    QCOMPARE(bench.content(), before);
    QCOMPARE(throwing([&] { bench.store().database().exec("INSERT INTO letters VALUES (1)"); }),
        "cannot write " + bench.directory()
            + "/bench.sqlite: no such table: letters; the directory must be writable and have room");
    QCOMPARE(bench.content(), before);
    QVERIFY_EXCEPTION_THROWN(throwing([] { throw std::logic_error("other"); }), std::logic_error);
    QCOMPARE(bench.content(), before);
    bench.lifeCycle().unplug("A");
    QVERIFY(bench.content() != before);
}

void tst_BenchStore::aChangeInsideAnotherIsAPartOfIt()
{
    TemporaryBench bench;
    BenchStore other(bench.directory());
    bench.store().change([&] {
        bench.store().change([&] { bench.host().restoreCall("first"); });
        bench.store().read([&] { QCOMPARE(bench.host().calls().size(), std::size_t(1)); });
        QCOMPARE(Host(other).calls().size(), std::size_t(0));
        bench.host().restoreCall("second");
    });
    QCOMPARE(Host(other).calls(), (std::vector<std::string>{"first", "second"}));
}

void tst_BenchStore::saysWhichDurabilityItHas()
{
    TemporaryBench bench;
    const auto synchronous = [&] { return sum(bench.store(), "PRAGMA synchronous"); };
    bench.store().change([&] { QCOMPARE(synchronous(), 2); }); // full
    bench.store().change([&] { QCOMPARE(synchronous(), 1); }, Durability::Relaxed);
    bench.store().change([&] { QCOMPARE(synchronous(), 2); });
    QCOMPARE(bench.store().database().execAndGet("PRAGMA journal_mode").getString(), "wal"s);
}

void tst_BenchStore::changesShowToOtherConnections()
{
    TemporaryBench bench;
    BenchStore other(bench.directory());
    QVERIFY(DriveLifeCycle(other).drives().empty());
    bench.addOutdated("A", "Pebble");
    QCOMPARE(DriveLifeCycle(other).drives().size(), std::size_t(1));
}

// The write-ahead log is durable as it is; moving it into the database is left to a later change.
void tst_BenchStore::closingDoesNotWaitForTheDisk()
{
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString();
    BenchStore::create(directory, false, [](BenchStore &) {});
    {
        BenchStore store(directory);
        Host(store).restoreCall("ls");
    }
    QVERIFY(std::filesystem::file_size(directory + "/bench.sqlite-wal") > 0);
    BenchStore store(directory);
    QCOMPARE(Host(store).calls(), std::vector<std::string>{"ls"});
}

void tst_BenchStore::othersMayReadTheDatabase()
{
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString() + "/bench";
    const mode_t mask = ::umask(0);
    BenchStore::create(directory, false, [](BenchStore &) {});
    ::umask(mask);
    const QFile::Permissions mode = QFile::permissions(QString::fromStdString(directory + "/bench.sqlite"));
    const QFile::Permissions owner =
        QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    QCOMPARE(mode, owner | QFile::ReadGroup | QFile::ReadOther);
}

static const TestClass<tst_BenchStore> benchStoreTests;

#include "tst_BenchStore.moc"
