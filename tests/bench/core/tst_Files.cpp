// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <filesystem>

#include <sys/stat.h>

using namespace bench;
using namespace std::string_literals;
namespace fs = std::filesystem;

/// Reading and writing of whole files.
class tst_Files : public QObject
{
    Q_OBJECT

private slots:
    void theBenchIsWhereItIsSaid();
    void whatIsWrittenIsRead();
    void refusesToRead();
    void replacesWhatStandsThere();
    void aRefusedFileLeavesNoTrace();
};

void tst_Files::theBenchIsWhereItIsSaid()
{
    QCOMPARE(executableDirectory(), QCoreApplication::applicationDirPath().toStdString());
    const QByteArray before = qgetenv("TARVO_BENCH");
    qputenv("TARVO_BENCH", "/a b");
    QCOMPARE(benchDirectory(), "/a b"s);
    for (const bool isSet : {true, false}) {
        isSet ? qputenv("TARVO_BENCH", "") : qunsetenv("TARVO_BENCH");
        QCOMPARE(benchDirectory(), executableDirectory() + "/bench");
    }
    qputenv("TARVO_BENCH", before);
}

void tst_Files::whatIsWrittenIsRead()
{
    const QTemporaryDir directory;
    const std::string file = directory.filePath("file").toStdString();
    for (const std::string &content : {"a\0\xFF"s, ""s, std::string(100000, 'x')}) {
        writeFile(file, content);
        QCOMPARE(readFile(file, 1 << 20), content);
        QCOMPARE(readFile(file, 2), content.substr(0, 2));
    }
    QCOMPARE(int(fs::status(file).permissions()), 0644);
    QCOMPARE(QDir(directory.path()).entryList(QDir::Files), QStringList("file"));
}

void tst_Files::refusesToRead()
{
    const QTemporaryDir directory;
    const std::string path = directory.path().toStdString();
    QCOMPARE(::mkfifo((path + "/FIFO").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", path + "/link");
    const std::pair<const char *, const char *> reasons[] = {{"/none", "No such file or directory"},
        {"", "is a directory"}, {"/FIFO", "is not a regular file"}, {"/link", "is not a regular file"}};
    for (const auto &[name, reason] : reasons) {
        QCOMPARE(refusal([&, file = path + name] { readFile(file, 10); }), reason + ""s);
    }
}

void tst_Files::replacesWhatStandsThere()
{
    for (const QString kind : {"file", "FIFO", "link", "dangling link"}) {
        const QTemporaryDir directory;
        const std::string path = directory.filePath("file").toStdString();
        const std::string target = directory.filePath("target").toStdString();
        if (kind == "FIFO") {
            QCOMPARE(::mkfifo(path.c_str(), 0600), 0);
        } else if (kind == "file") {
            writeFile(path, "old");
        } else {
            fs::create_symlink(target, path);
        }
        if (kind == "link") {
            writeFile(target, "dear");
        }
        writeFile(path, "new");
        QVERIFY(fs::symlink_status(path).type() == fs::file_type::regular);
        QCOMPARE(readFile(path, 10), "new"s);
        QCOMPARE(fs::exists(target), kind == "link");
        QVERIFY(kind != "link" || readFile(target, 10) == "dear");
    }
}

void tst_Files::aRefusedFileLeavesNoTrace()
{
    const QTemporaryDir directory;
    fs::create_directory(directory.filePath("file").toStdString());
    QCOMPARE(refusal([&] { writeFile(directory.filePath("file").toStdString(), ""); }), "is a directory"s);
    QCOMPARE(refusal([&] { writeFile(directory.filePath("none/file").toStdString(), ""); }),
        "No such file or directory"s);
    QCOMPARE(QDir(directory.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("file"));
}

static const TestClass<tst_Files> filesTests;
#include "tst_Files.moc"
