#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <sys/resource.h>

using namespace bench;

class tst_Files : public QObject
{
    Q_OBJECT

private slots:
    void theBenchIsWhereTheEnvironmentSays();
    void readsWhatWasWritten();
    void readsTheBeginning();
    void readsThroughASymbolicLink();
    void refusesFilesThatAreTooLarge();
    void refusesFilesThatCannotBeOpened();
    void aFileThatCannotBeWrittenIsNotLeft();
};

void tst_Files::theBenchIsWhereTheEnvironmentSays()
{
    const std::string beside = QCoreApplication::applicationDirPath().toStdString();
    QCOMPARE(executableDirectory(), beside);
    qputenv("TARVO_BENCH", "/some where");
    QCOMPARE(benchDirectory(), "/some where"s);
    qputenv("TARVO_BENCH", "");
    QCOMPARE(benchDirectory(), beside + "/bench");
    qunsetenv("TARVO_BENCH");
    QCOMPARE(benchDirectory(), beside + "/bench");
}

void tst_Files::readsWhatWasWritten()
{
    const QTemporaryDir directory;
    const std::string path = directory.filePath("file").toStdString();
    writeFile(path, everyByte());
    QCOMPARE(readFile(path, 256), everyByte());
    writeFile(path, "");
    QCOMPARE(readFile(path, 0), ""s);
}

void tst_Files::readsTheBeginning()
{
    const QTemporaryDir directory;
    const std::string path = directory.filePath("file").toStdString();
    writeFile(path, "abcdef");
    QCOMPARE(readBeginning(path, 2), std::pair("ab"s, std::size_t(6)));
    QCOMPARE(readBeginning(path, 6), std::pair("abcdef"s, std::size_t(6)));
    QCOMPARE(readBeginning(path, 100), std::pair("abcdef"s, std::size_t(6)));
}

void tst_Files::readsThroughASymbolicLink()
{
    const QTemporaryDir directory;
    writeFile(directory.filePath("file").toStdString(), "abc");
    QVERIFY(QFile::link(directory.filePath("file"), directory.filePath("link")));
    QCOMPARE(readFile(directory.filePath("link").toStdString(), 3), "abc"s);
}

void tst_Files::refusesFilesThatAreTooLarge()
{
    const QTemporaryDir directory;
    const std::string path = directory.filePath("file").toStdString();
    writeFile(path, "abc");
    QCOMPARE(refusal([&] { readFile(path, 2); }), "is too large: 3 bytes, at most 2 are read"s);
    // A device is no regular file, however small it says that it is.
    QCOMPARE(refusal([] { readFile("/dev/zero", 10); }), "is not a regular file"s);
}

void tst_Files::refusesFilesThatCannotBeOpened()
{
    const QTemporaryDir directory;
    const std::string path = directory.filePath("file").toStdString();
    QCOMPARE(refusal([&] { readFile(path, 3); }), "No such file or directory"s);
    writeFile(path, "abc");
    rlimit limit = {};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit noFurther = {0, limit.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &noFurther), 0);
    const std::string reason = refusal([&] { readFile(path, 3); });
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    QCOMPARE(reason, "Too many open files"s);
}

void tst_Files::aFileThatCannotBeWrittenIsNotLeft()
{
    QCOMPARE(refusal([] { writeFile("/nowhere/file", "abc"); }), "No such file or directory"s);
    const QTemporaryDir directory;
    const QString link = directory.filePath("link");
    QVERIFY(QFile::link("/dev/full", link));
    QCOMPARE(refusal([&] { writeFile(link.toStdString(), "abc"); }), "No space left on device"s);
    QVERIFY(!QFileInfo(link).isSymLink());
}

static const TestClass<tst_Files> filesTests;

#include "tst_Files.moc"
