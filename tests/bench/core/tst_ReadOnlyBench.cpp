#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"
#include "tests/bench/core/OtherUser.h"

#include <csignal>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace bench;

/// A bench of another user, which may be read.
class tst_ReadOnlyBench : public QObject
{
    Q_OBJECT

private slots:
    void isRead_data();
    void isRead();
    void isNotReadWithoutItsLog();
    void isQueriedAndExported();
    void noneIsMadeThere();
};

namespace {

/// A process that has changed the bench and keeps it open until this object is destroyed.
class Owner
{
public:
    explicit Owner(const std::string &directory)
    {
        int ends[2] = {};
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0 || (process = ::fork()) < 0) {
            qFatal("cannot start another process");
        }
        end = ends[process == 0 ? 1 : 0];
        ::close(ends[process == 0 ? 0 : 1]);
        char byte = 'r';
        if (process == 0) {
            BenchStore store(directory);
            Host(store).restoreCall("second"); // which is in the write-ahead log, not in the database
            const bool isTold = ::write(end, &byte, 1) == 1 && ::read(end, &byte, 1) == 0;
            std::_Exit(isTold ? 0 : 1);
        }
        if (::read(end, &byte, 1) != 1) {
            qFatal("the other process did not open the bench");
        }
    }
    ~Owner()
    {
        ::close(end);
        ::waitpid(process, nullptr, 0);
    }
    Q_DISABLE_COPY(Owner)

    void kill() const { ::kill(process, SIGKILL); }

private:
    pid_t process = 0;
    int end = 0;
};

const std::vector<std::string> BothCalls{"first", "second"};

} // namespace

void tst_ReadOnlyBench::isRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("owner");
    QTest::newRow("closed") << "bench"
                            << "gone";
    QTest::newRow("with reserved characters") << "100%41?a#b"
                                              << "gone";
    QTest::newRow("open in another process") << "bench"
                                             << "here";
    QTest::newRow("left by a killed process") << "bench"
                                              << "killed";
}

void tst_ReadOnlyBench::isRead()
{
    QFETCH(QString, name);
    QFETCH(QString, owner);
    const QTemporaryDir temporary;
    const std::string directory = temporary.filePath(name).toStdString();
    QCOMPARE(::chmod(temporary.path().toStdString().c_str(), 0755), 0);
    BenchStore::create(directory, false, [](BenchStore &store) { Host(store).restoreCall("first"); });
    auto other = std::make_unique<Owner>(directory);
    if (owner == "killed") {
        other->kill();
    }
    if (owner == "gone") {
        BenchStore store(directory);
        other.reset();
        QCOMPARE(Host(store).calls(), BothCalls);
    }
    QCOMPARE(::chmod(directory.c_str(), 0555), 0);
    {
        const OtherUser user;
        BenchStore store(directory);
        QCOMPARE(Host(store).calls(), BothCalls);
        const std::string reason = refusal([&] { Host(store).restoreCall("third"); });
        QVERIFY2(reason.rfind("cannot write " + directory + "/bench.sqlite: ", 0) == 0, reason.c_str());
        QVERIFY2(reason.find('\n') == std::string::npos, reason.c_str());
        QCOMPARE(Host(store).calls(), BothCalls);
    }
    QCOMPARE(::chmod(directory.c_str(), 0755), 0);
    BenchStore store(directory);
    QCOMPARE(Host(store).calls(), BothCalls);
}

void tst_ReadOnlyBench::isNotReadWithoutItsLog()
{
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString();
    BenchStore::create(directory, false, [](BenchStore &store) { Host(store).restoreCall("first"); });
    auto owner = std::make_unique<Owner>(directory);
    owner->kill();
    owner.reset();
    QVERIFY(QFile::remove(temporary.filePath("bench.sqlite-shm")));
    QCOMPARE(::chmod(directory.c_str(), 0555), 0);
    const OtherUser user;
    QCOMPARE(refusal([&] { const BenchStore store(directory); }),
        "cannot read " + directory
            + "/bench.sqlite: unable to open database file; it must be readable, and its directory writable "
              "while a write-ahead log is there");
}

void tst_ReadOnlyBench::isQueriedAndExported()
{
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString();
    BenchStore::create(directory, false, [](BenchStore &store) {
        Drive drive;
        drive.serial = "A";
        drive.model = "Pebble";
        drive.faults = {numberFault(FaultKind::SettleTime, 1)};
        DriveLifeCycle(store).add(drive);
    });
    QCOMPARE(::chmod(directory.c_str(), 0555), 0);
    const OtherUser user;
    BenchStore store(directory);
    QCOMPARE(Discovery(store, "/nowhere").query().size(), std::size_t(1));
    QCOMPARE(DriveLifeCycle(store).drives().size(), std::size_t(1));
    QVERIFY(!refusal([&] { DriveLifeCycle(store).remove("A"); }).empty());
}

void tst_ReadOnlyBench::noneIsMadeThere()
{
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString();
    QCOMPARE(::chmod(directory.c_str(), 0555), 0);
    const OtherUser user;
    const auto creating = [](const std::string &where) {
        return refusal([&] { BenchStore::create(where, true, [](BenchStore &) {}); });
    };
    QCOMPARE(creating(directory),
        "cannot write " + directory
            + "/bench.sqlite: Permission denied; the directory must be writable and have room");
    QCOMPARE(creating(directory + "/a/b"),
        "cannot make the directory " + directory + "/a/b: Permission denied; name another with --bench");
    QVERIFY(QDir(temporary.path()).isEmpty());
}

static const TestClass<tst_ReadOnlyBench> readOnlyBenchTests;

#include "tst_ReadOnlyBench.moc"
