#include "tests/bench/Programs.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

/// Every command in the guide to the bench, run as written and in its order.
class tst_Guide : public QObject
{
    Q_OBJECT

private slots:
    void everyCommandWorks_data();
    void everyCommandWorks();

private:
    QTemporaryDir folder;
};

void tst_Guide::everyCommandWorks_data()
{
    QTest::addColumn<QString>("command");
    QFile guide(GUIDE);
    QVERIFY(guide.open(QIODevice::ReadOnly));
    bool inCommands = false;
    for (const QString &line : QString::fromUtf8(guide.readAll()).split('\n')) {
        if (line.startsWith("```")) {
            inCommands = line == "```sh";
        } else if (inCommands) {
            QTest::addRow("%s", qPrintable(line)) << line;
        }
    }
}

void tst_Guide::everyCommandWorks()
{
    QFETCH(QString, command);
    const QString commands = "PATH=\"$0:$PATH\"; cd \"$1\"; " + command;
    const Ended ended = runProgram(
        "sh", {"-c", commands, QFileInfo(driveBenchPath()).path(), folder.path()}, folder.filePath("bench"));
    QVERIFY2(ended.status == 0, ended.errors.constData());
    QCOMPARE(ended.errors, QByteArray());
}

QTEST_GUILESS_MAIN(tst_Guide)
#include "tst_Guide.moc"
