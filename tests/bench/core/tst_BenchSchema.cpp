#include "bench/core/Schema.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"
#include "tests/bench/core/OtherUser.h"

#include <SQLiteCpp/Statement.h>

#include <thread>

#include <sys/stat.h>

using namespace bench;

/// Benches of other versions of the schema.
class tst_BenchSchema : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aNewerOneIsRefused();
    void theFirstOneIsUpgraded();
    void twoAtOnceUpgradeOnce();
    void anUpgradeThatFailsLeavesTheOldOne();
    void anOldOneIsNotReadWhereItCannotBeUpgraded();

private:
    std::string file() const { return temporary->path().toStdString() + "/bench.sqlite"; }
    std::string directory() const { return temporary->path().toStdString(); }
    SQLite::Database database() const { return {file(), SQLite::OPEN_READWRITE}; }
    /// What a query yields, in which all columns are one text.
    QStringList rows(const char *query) const;

    std::unique_ptr<QTemporaryDir> temporary;
};

QStringList tst_BenchSchema::rows(const char *query) const
{
    SQLite::Database connection = database();
    SQLite::Statement row(connection, query);
    QStringList found;
    while (row.executeStep()) {
        found += QString::fromStdString(row.getColumn(0).getString());
    }
    return found;
}

/// A bench as the first version made it.
void tst_BenchSchema::init()
{
    temporary = std::make_unique<QTemporaryDir>();
    SQLite::Database connection(file(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    connection.exec(SchemaSteps[0]);
    connection.exec("PRAGMA journal_mode = WAL; PRAGMA user_version = 1; PRAGMA application_id = "
        + std::to_string(ApplicationId));
    connection.exec("INSERT INTO drives VALUES (7, x'41', CAST('Pebble' AS BLOB), 1, 1, 1, x'4F', x'31', "
                    "x'32', 0, x'33', x'34', 1, 5, 6, 1, 777, 8, 9, 10, 11, 12)");
    connection.exec("INSERT INTO faults VALUES (7, 0, 'flash-error', '', 4096, x'', 1), (7, 1, 'text', "
                    "'modelName', 0, x'00FF', 0)");
    connection.exec("INSERT INTO chips VALUES (7, x'0102')");
    connection.exec("INSERT INTO host VALUES (1, 1, 0, 1, 0, '9.9')");
    connection.exec("INSERT INTO calls VALUES (3, 'ls -l')");
}

void tst_BenchSchema::aNewerOneIsRefused()
{
    database().exec("PRAGMA user_version = " + std::to_string(SchemaVersion + 1));
    QCOMPARE(refusal([&] { const BenchStore store(directory()); }),
        file() + " has schema version 3, only versions up to 2 are known; use a newer drive-bench");
    QCOMPARE(rows("PRAGMA user_version"), QStringList("3"));
}

void tst_BenchSchema::theFirstOneIsUpgraded()
{
    BenchStore store(directory());
    const Drive drive = DriveLifeCycle(store).drive("A");
    QCOMPARE(drive.model, "Pebble"s);
    QCOMPARE(drive.chipset, std::int64_t(Chipset::Asm1051));
    QVERIFY(drive.plugged && drive.answers && drive.mounted && drive.incomplete && !drive.bootRom);
    QCOMPARE(drive.reportedSerial, "O"s);
    QCOMPARE(drive.runningFirmware + drive.runningConfiguration, "12"s);
    QCOMPARE(drive.flashFirmware + drive.flashConfiguration, "34"s);
    QCOMPARE((std::vector{drive.bytesWritten, drive.bytesToWrite, drive.flashRate, drive.powerUps,
                 drive.pluggedAt, drive.queries, drive.flashes, drive.heartbeat}),
        (std::vector<std::int64_t>{5, 6, 777, 8, 9, 10, 11, 12}));
    QCOMPARE(drive.unpluggedAt + drive.lastUpdateAt, std::int64_t(0));
    QCOMPARE(drive.lastUpdate, ""s);
    QCOMPARE(drive.faults.size(), std::size_t(2));
    QCOMPARE(faultText(drive.faults.front()), "flash-error 4096 (once)"s);
    QCOMPARE(faultText(drive.faults.back()), "text modelName=\\x00\\xFF"s);
    QCOMPARE(rows("SELECT hex(content) FROM chips"), QStringList("0102"));
    QVERIFY(Host(store).state().companionInstalled && !Host(store).state().serviceSubmitted);
    QCOMPARE(Host(store).state().extensionVersion, "9.9"s);
    QCOMPARE(Host(store).calls(), std::vector<std::string>{"ls -l"});
    QCOMPARE(rows("PRAGMA user_version"), QStringList("2"));
    DriveLifeCycle(store).unplug("A");
    QVERIFY(DriveLifeCycle(store).drive("A").unpluggedAt > 0);
}

void tst_BenchSchema::twoAtOnceUpgradeOnce()
{
    std::vector<std::string> reasons(8);
    std::vector<std::thread> threads;
    threads.reserve(reasons.size());
    for (std::string &reason : reasons) {
        threads.emplace_back(
            [&reason, this] { reason = refusal([&] { const BenchStore store(directory()); }); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    QCOMPARE(reasons, std::vector<std::string>(8));
    QCOMPARE(rows("PRAGMA user_version"), QStringList("2"));
}

void tst_BenchSchema::anUpgradeThatFailsLeavesTheOldOne()
{
    database().exec("ALTER TABLE drives ADD COLUMN lastUpdate TEXT NOT NULL DEFAULT 'mine'");
    const QStringList columns = rows("SELECT name FROM pragma_table_info('drives')");
    QCOMPARE(refusal([&] { const BenchStore store(directory()); }),
        "cannot write " + file()
            + ": duplicate column name: lastUpdate; the directory must be writable and have room");
    QCOMPARE(rows("SELECT name FROM pragma_table_info('drives')"), columns);
    QCOMPARE(rows("PRAGMA user_version"), QStringList("1"));
    QCOMPARE(rows("SELECT lastUpdate FROM drives"), QStringList("mine"));
}

void tst_BenchSchema::anOldOneIsNotReadWhereItCannotBeUpgraded()
{
    QCOMPARE(::chmod(directory().c_str(), 0555), 0);
    QCOMPARE(::chmod(file().c_str(), 0444), 0);
    {
        const OtherUser user;
        const std::string reason = refusal([&] { const BenchStore store(directory()); });
        QVERIFY2(reason.rfind("cannot write " + file() + ": ", 0) == 0, reason.c_str());
    }
    QCOMPARE(::chmod(directory().c_str(), 0755), 0);
    QCOMPARE(rows("PRAGMA user_version"), QStringList("1"));
}

static const TestClass<tst_BenchSchema> benchSchemaTests;

#include "tst_BenchSchema.moc"
