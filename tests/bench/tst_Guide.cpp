// SPDX-License-Identifier: MIT
#include "bench/core/Faults.h"
#include "tests/bench/Programs.h"
#include "tests/support/TestProgram.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

/// The guide to the bench and its manual page: every command line in them, run as written and in its order,
/// with the installed command on PATH, and what the guide has to name.
class tst_Guide : public QObject
{
    Q_OBJECT

private slots:
    void everyCommandWorks_data();
    void everyCommandWorks();
    void everyExampleOfTheManualWorks_data();
    void everyExampleOfTheManualWorks();
    void namesEveryFault();
    void namesEveryMember();

private:
    void run(QString command, const QString &bench);

    QTemporaryDir directory;
};

namespace {

QString textOf(const char *path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString guide()
{
    return textOf(GUIDE);
}

} // namespace

/// Runs a command line of a document. Files in /tmp are in a directory of this test instead.
void tst_Guide::run(QString command, const QString &bench)
{
    const QString commands = "PATH=\"$0:$PATH\"; " + command.replace("/tmp", directory.path());
    const Ended ended = runProgram(
        "sh", {"-c", commands, QFileInfo(driveBenchPath()).path()}, directory.filePath(bench).toStdString());
    QVERIFY2(ended.status == 0, ended.errors.constData());
    QCOMPARE(ended.errors, QByteArray());
}

void tst_Guide::everyCommandWorks_data()
{
    QTest::addColumn<QString>("command");
    bool inCommands = false;
    for (const QString &line : guide().split('\n')) {
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
    QVERIFY2(command.startsWith("drive-bench "), qPrintable(command));
    run(command, "bench");
}

void tst_Guide::everyExampleOfTheManualWorks_data()
{
    QTest::addColumn<QString>("command");
    const QString examples = textOf(MANUAL).section(".SH EXAMPLES\n.nf\n", 1).section(".fi", 0, 0);
    for (const QString &line : examples.split('\n', Qt::SkipEmptyParts)) {
        QTest::addRow("%s", qPrintable(line)) << QString(line).remove('\\');
    }
}

void tst_Guide::everyExampleOfTheManualWorks()
{
    QFETCH(QString, command);
    QVERIFY2(command.startsWith("drive-bench "), qPrintable(command));
    run(command, "manual");
}

void tst_Guide::namesEveryFault()
{
    for (const bench::FaultDescription &kind : bench::faultDescriptions()) {
        QVERIFY2(guide().contains(QRegularExpression(QString("`%1[` ]").arg(kind.name))), kind.name);
    }
}

void tst_Guide::namesEveryMember()
{
    const std::string bench = directory.filePath("members").toStdString();
    QCOMPARE(driveBench("init", bench).status, 0);
    const QJsonObject json = QJsonDocument::fromJson(driveBench("export", bench).output).object();
    QStringList names = json.keys();
    names += json.value("drives").toArray().first().toObject().keys();
    names += json.value("host").toObject().keys();
    QVERIFY(names.size() > 20);
    for (const QString &name : names) {
        QVERIFY2(guide().contains('`' + name + '`'), qPrintable(name));
    }
}

static const TestClass<tst_Guide> guideTests;
#include "tst_Guide.moc"
