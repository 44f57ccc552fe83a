// SPDX-License-Identifier: MIT
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <csignal>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace bench;
using namespace std::string_literals;

/// A bench that several people use.
class tst_SharedBench : public QObject
{
    Q_OBJECT

private slots:
    void readingLeavesItToItsOwner_data();
    void readingLeavesItToItsOwner();
    void isNotReadWithoutItsLog();
    void filesHonourTheUmask();
    void noneIsMadeWhereNothingMayBeWritten();
};

namespace {

/// Another user for as long as this object lives, where root would be allowed everything.
class OtherUser
{
public:
    OtherUser() : isRoot(::geteuid() == 0)
    {
        if (isRoot && ::seteuid(65534) != 0) {
            qFatal("cannot become another user");
        }
    }
    ~OtherUser()
    {
        if (isRoot && ::seteuid(0) != 0) {
            qFatal("cannot become root again");
        }
    }
    Q_DISABLE_COPY(OtherUser)

private:
    const bool isRoot;
};

/// A process that has added a drive and keeps the bench open until this object is destroyed.
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
            Store store(directory);
            addDrive(store, drive("B")); // which is in the write-ahead log, not in the database
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

void makeBench(const std::string &directory)
{
    createBench(directory, false, [](Store &store) {
        addDrive(store, drive("A"));
        setFault(store, "A", {FaultKind::SettleTime, "1", false});
    });
}

} // namespace

void tst_SharedBench::readingLeavesItToItsOwner_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("owner");
    QTest::addColumn<int>("mode"); // of the directory
    addRow("closed", "bench", "gone", 0555);
    addRow("with reserved characters", "100%41?a#b", "gone", 0555);
    addRow("open in another process", "bench", "here", 0555);
    addRow("left by a killed process", "bench", "killed", 0555);
    for (const int mode : {02775, 02777, 01777}) {
        QTest::addRow("shared, mode %o", unsigned(mode)) << "bench"
                                                         << "gone" << mode;
        QTest::addRow("shared and open, mode %o", unsigned(mode)) << "bench"
                                                                  << "here" << mode;
    }
}

void tst_SharedBench::readingLeavesItToItsOwner()
{
    QFETCH(QString, name);
    QFETCH(QString, owner);
    QFETCH(int, mode);
    const QTemporaryDir temporary;
    const std::string directory = temporary.filePath(name).toStdString();
    QCOMPARE(::chmod(temporary.path().toStdString().c_str(), 0755), 0);
    makeBench(directory);
    auto other = std::make_unique<Owner>(directory);
    if (owner == "killed") {
        other->kill();
    } else if (owner == "gone") {
        other.reset();
    }
    QCOMPARE(::chmod(directory.c_str(), mode_t(mode)), 0);
    {
        const OtherUser user;
        Store store(directory);
        QCOMPARE(int(allDrives(store).size()), 2);
        QCOMPARE(int(query(store, "/nowhere").size()), 2);
        const std::string reason = refusal([&] { removeDrive(store, "A"); });
        QCOMPARE(reason.substr(0, directory.size() + 28), "cannot write " + directory + "/bench.sqlite: ");
    }
    Store store(directory);
    removeDrive(store, "A");
    QCOMPARE(int(allDrives(store).size()), 1);
    for (const QFileInfo &file : QDir(QString::fromStdString(directory)).entryInfoList(QDir::Files)) {
        QCOMPARE(file.ownerId(), ::geteuid());
    }
}

void tst_SharedBench::isNotReadWithoutItsLog()
{
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString();
    makeBench(directory);
    Owner(directory).kill();
    QVERIFY(QFile::remove(temporary.filePath("bench.sqlite-shm")));
    QCOMPARE(::chmod(directory.c_str(), 0555), 0);
    const OtherUser user;
    QCOMPARE(refusal([&] { const Store store(directory); }),
        "cannot read " + directory
            + "/bench.sqlite: unable to open database file; it must be readable, and its directory writable "
              "while a write-ahead log is there");
}

void tst_SharedBench::filesHonourTheUmask()
{
    for (const mode_t mask : {0022, 0002, 0077}) {
        const QTemporaryDir temporary;
        const mode_t before = ::umask(mask);
        makeBench(temporary.path().toStdString());
        Store store(temporary.path().toStdString());
        addDrive(store, drive("C"));
        logCall(store.directory(), {"ls"});
        ::umask(before);
        for (const QFileInfo &file : QDir(temporary.path()).entryInfoList(QDir::Files)) {
            struct stat status = {};
            QCOMPARE(::stat(file.filePath().toUtf8().constData(), &status), 0);
            QCOMPARE(status.st_mode & 0777U, 0666U & ~mask);
        }
    }
}

void tst_SharedBench::noneIsMadeWhereNothingMayBeWritten()
{
    const QTemporaryDir temporary;
    const std::string directory = temporary.path().toStdString();
    QCOMPARE(::chmod(directory.c_str(), 0555), 0);
    const OtherUser user;
    QCOMPARE(refusal([&] { makeBench(directory); }),
        "cannot write " + directory
            + "/bench.sqlite.new: Permission denied; the directory must be writable and have room");
    QCOMPARE(refusal([&] { makeBench(directory + "/a/b"); }),
        "cannot make the directory " + directory + "/a/b: Permission denied; name another with --bench");
    QVERIFY(QDir(temporary.path()).isEmpty());
}

static const TestClass<tst_SharedBench> sharedBenchTests;
#include "tst_SharedBench.moc"
