// SPDX-License-Identifier: MIT
#include "bench/core/Connection.h"

#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <sqlite3.h>

#include <filesystem>
#include <map>
#include <stdexcept>

using namespace bench;
using namespace std::string_literals;

/// The transactions of a bench.
class tst_Connection : public QObject
{
    Q_OBJECT

private slots:
    void refusesAfterFiveSeconds();
    void readsOneState();
    void aChangeThatThrowsIsUndone();
    void aChangeInsideAnotherIsAPartOfIt();
    void aChangeIsRefusedWhenItsDatabaseIsGone();
    void aChangeIsDurable();
};

void tst_Connection::refusesAfterFiveSeconds()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    SQLite::Database other(bench.file(), SQLite::OPEN_READWRITE);
    other.exec("BEGIN IMMEDIATE");
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(refusal([&] { unplugDrive(bench.store(), "A"); }),
        bench.file() + " was in use by another process for 5 seconds; try again");
    QVERIFY2(
        clock.elapsed() >= 4900 && clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(bench.drive("A").plugged); // reading waits for nobody
    other.exec("ROLLBACK");
    unplugDrive(bench.store(), "A");
    QVERIFY(!bench.drive("A").plugged);
}

void tst_Connection::readsOneState()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    Store other(bench.directory());
    bench.store().read([&] {
        QVERIFY(bench.drive("A").plugged);
        unplugDrive(other, "A");
        QVERIFY(bench.drive("A").plugged);
    });
    QVERIFY(!bench.drive("A").plugged);
}

void tst_Connection::aChangeThatThrowsIsUndone()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const std::string before = bench.content();
    const auto throwing = [&](const std::function<void()> &end) {
        return refusal([&] {
            bench.store().change([&] {
                unplugDrive(bench.store(), "A");
                end();
            });
        });
    };
    QCOMPARE(throwing([] { throw Refused("no"); }), "no"s);
    QCOMPARE(bench.content(), before);
    bool isPassedOn = false;
    try {
        throwing([] { throw std::logic_error("other"); });
    } catch (const std::logic_error &) {
        isPassedOn = true;
    }
    QVERIFY(isPassedOn);
    QCOMPARE(bench.content(), before);
    unplugDrive(bench.store(), "A");
    QVERIFY(bench.content() != before);
}

void tst_Connection::aChangeInsideAnotherIsAPartOfIt()
{
    TemporaryBench bench;
    Store other(bench.directory());
    bench.store().change([&] {
        bench.addOutdated("A");
        QVERIFY(bench.store().read([&] { return bench.drive("A").plugged; }));
        QVERIFY(allDrives(other).empty());
        bench.addOutdated("B");
    });
    QCOMPARE(int(allDrives(other).size()), 2);
}

void tst_Connection::aChangeIsRefusedWhenItsDatabaseIsGone()
{
    for (const bool isReplaced : {false, true}) {
        TemporaryBench bench;
        bench.addOutdated("A");
        std::filesystem::rename(bench.file(), bench.file() + ".old");
        if (isReplaced) {
            writeFile(bench.file(), readFile(bench.file() + ".old", 1 << 20));
        }
        QCOMPARE(refusal([&] { unplugDrive(bench.store(), "A"); }),
            bench.file() + " was taken away or replaced meanwhile; try again");
    }
}

namespace {

// SQLite's own file system, which counts here how often files are made durable.
int syncs = 0;
int (*syncFile)(sqlite3_file *, int) = nullptr;

int openAndCount(sqlite3_vfs *, const char *name, sqlite3_file *file, int flags, int *result)
{
    static std::map<const sqlite3_io_methods *, sqlite3_io_methods> counting;
    sqlite3_vfs *const real = sqlite3_vfs_find("unix");
    const int status = real->xOpen(real, name, file, flags, result);
    if (status == SQLITE_OK) {
        syncFile = file->pMethods->xSync;
        sqlite3_io_methods &methods = counting.emplace(file->pMethods, *file->pMethods).first->second;
        methods.xSync = [](sqlite3_file *synced, int how) {
            ++syncs;
            return syncFile(synced, how);
        };
        file->pMethods = &methods;
    }
    return status;
}

} // namespace

/// Whatever has been said to be done outlives a power cut.
void tst_Connection::aChangeIsDurable()
{
    sqlite3_vfs counting = *sqlite3_vfs_find("unix");
    counting.zName = "counting";
    counting.xOpen = openAndCount;
    sqlite3_vfs_register(&counting, 1);
    const QTemporaryDir directory;
    createBench(directory.path().toStdString(), false, [](Store &) {});
    QVERIFY(syncs >= 2); // the journal of what is made, and the database
    for (const char *serial : {"A", "B", "C"}) {
        syncs = 0;
        Store store(directory.path().toStdString());
        addDrive(store, drive(serial));
        QVERIFY2(syncs >= 1, serial);
    }
    // Who closes it does not wait until what is durable in the log is in the database as well.
    QVERIFY(std::filesystem::file_size(directory.filePath("bench.sqlite-wal").toStdString()) > 0);
    sqlite3_vfs_unregister(&counting);
}

static const TestClass<tst_Connection> connectionTests;
#include "tst_Connection.moc"
