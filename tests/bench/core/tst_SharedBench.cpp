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
    void othersLeaveNothingThatItsOwnerCannotWrite();
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

/// What the work is refused with that another user does, in a process of its own.
std::string refusalBy(uid_t user, const std::function<void()> &work)
{
    int ends[2] = {};
    const pid_t process = ::pipe(ends) == 0 ? ::fork() : -1;
    if (process == 0) {
        const bool isUser = ::geteuid() != 0 || ::setuid(user) == 0;
        const std::string reason = isUser ? refusal(work) : "cannot become another user";
        std::_Exit(::write(ends[1], reason.data(), reason.size()) < 0 ? 1 : 0);
    }
    ::close(ends[1]);
    char reason[1000] = {};
    const ssize_t size = ::read(ends[0], reason, sizeof reason);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(process, &status, 0);
    return status == 0 && size >= 0 ? std::string(reason, std::size_t(size)) : "it did not end";
}

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
    addRow("with reserved characters", "100%41?a#b", "gone", 0555);
    addRow("left by a killed process", "bench", "killed", 0555);
    for (const int mode : {0555, 02775, 02777, 01777}) {
        for (const char *owner : {"not yet", "gone", "here"}) {
            QTest::addRow("mode %o, owner %s", unsigned(mode), owner) << "bench" << owner << mode;
        }
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
    auto other = owner == "not yet" ? nullptr : std::make_unique<Owner>(directory);
    const int count = other == nullptr ? 1 : 2;
    if (owner == "killed") {
        other->kill();
    } else if (owner == "gone") {
        other.reset();
    }
    QCOMPARE(::chmod(directory.c_str(), mode_t(mode)), 0);
    {
        const OtherUser user;
        Store store(directory);
        QCOMPARE(int(allDrives(store).size()), count);
        QCOMPARE(int(query(store, "/nowhere").size()), count);
        const std::string reason = refusal([&] { removeDrive(store, "A"); });
        QCOMPARE(reason.substr(0, directory.size() + 28), "cannot write " + directory + "/bench.sqlite: ");
    }
    Store store(directory);
    removeDrive(store, "A");
    QCOMPARE(int(allDrives(store).size()), count - 1);
    for (const QFileInfo &file : QDir(QString::fromStdString(directory)).entryInfoList(QDir::Files)) {
        QCOMPARE(file.ownerId(), ::geteuid());
    }
}

void tst_SharedBench::othersLeaveNothingThatItsOwnerCannotWrite()
{
    for (const mode_t mode : {02777, 01777}) {
        const QTemporaryDir temporary;
        const std::string directory = temporary.path().toStdString();
        ::chmod(directory.c_str(), mode);
        QCOMPARE(refusalBy(65533, [&] { makeBench(directory); }), ""s);
        QCOMPARE(refusalBy(65534, [&] { allDrives(Store(directory)); }), ""s);
        const auto remove = [&] {
            Store store(directory);
            removeDrive(store, "A");
        };
        QVERIFY(::geteuid() != 0 || contains(refusalBy(65534, remove), "cannot write "));
        QCOMPARE(refusalBy(65533, remove), ""s);
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
