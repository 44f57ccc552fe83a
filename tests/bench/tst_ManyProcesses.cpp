#include "tests/bench/TemporaryBench.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

#include <memory>
#include <vector>

using namespace bench;

/// Several processes on one bench, some of which are killed.
///
/// TARVO_BENCH_SECONDS sets how long they change it: 3 without it.
class tst_ManyProcesses : public QObject
{
    Q_OBJECT

private slots:
    void loseNoChange();
    void survivesKills();
};

namespace {

constexpr int ProcessCount = 8;

int secondsToRun()
{
    const int set = qEnvironmentVariableIntValue("TARVO_BENCH_SECONDS");
    return set > 0 ? set : 3;
}

/// One of the processes: counts up a common number, its own number and the host's, and reads in between.
int changeForAWhile(const QString &folder, int number, int seconds)
{
    Bench bench(folder, QString());
    QElapsedTimer clock;
    clock.start();
    const QString own = QString("OWN%1").arg(number);
    std::int64_t changes = 0;
    QString reason;
    while (clock.elapsed() < seconds * 1000) {
        const auto countUp = [](Drive *drive, QString *) {
            ++drive->bytesWritten;
            return true;
        };
        const auto countUpHost = [](Host *host, QString *) {
            host->extensionVersion = QString::number(host->extensionVersion.toInt() + 1);
            return true;
        };
        QStringList problems;
        if (!bench.changeDrive("COMMON", countUp, &reason) || !bench.changeDrive(own, countUp, &reason)
            || !bench.changeHost(countUpHost, &reason) || bench.drives(&problems).size() != ProcessCount + 1
            || !problems.isEmpty()) {
            std::printf("%s %s\n", qPrintable(reason), qPrintable(problems.join(' ')));
            return 1;
        }
        ++changes;
    }
    std::printf("%lld", static_cast<long long>(changes));
    return 0;
}

std::vector<std::unique_ptr<QProcess>> startAll(const QString &folder, int seconds)
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < ProcessCount; ++i) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(QCoreApplication::applicationFilePath(),
            {"change", folder, QString::number(i), QString::number(seconds)});
    }
    return processes;
}

void addDrives(TemporaryBench *bench)
{
    bench->addOutdated("COMMON", "Pebble");
    for (int i = 0; i < ProcessCount; ++i) {
        bench->addOutdated(QString("OWN%1").arg(i), "Harbour");
    }
    QString reason;
    (*bench)->changeHost(
        [](Host *host, QString *) {
            host->extensionVersion = "0";
            return true;
        },
        &reason);
}

} // namespace

void tst_ManyProcesses::loseNoChange()
{
    TemporaryBench bench;
    addDrives(&bench);
    const auto processes = startAll(bench.folder(), secondsToRun());
    std::int64_t total = 0;
    for (int i = 0; i < ProcessCount; ++i) {
        QProcess &process = *processes[static_cast<std::size_t>(i)];
        QVERIFY(process.waitForFinished((secondsToRun() + 30) * 1000));
        const QByteArray output = process.readAllStandardOutput();
        QVERIFY2(process.exitCode() == 0, output.constData());
        QCOMPARE(bench.drive(QString("OWN%1").arg(i)).bytesWritten, std::int64_t(output.toLongLong()));
        QVERIFY(output.toLongLong() > 0);
        total += output.toLongLong();
    }
    QCOMPARE(bench.drive("COMMON").bytesWritten, total);
    QStringList problems;
    QCOMPARE(bench->host(&problems).extensionVersion, QString::number(total));
}

void tst_ManyProcesses::survivesKills()
{
    TemporaryBench bench;
    addDrives(&bench);
    for (int round = 0; round < 5; ++round) {
        const auto processes = startAll(bench.folder(), 30);
        QTest::qWait(150 + 20 * round);
        for (const auto &process : processes) {
            process->kill();
        }
        for (const auto &process : processes) {
            process->waitForFinished();
        }
        QStringList problems;
        QCOMPARE(int(bench->drives(&problems).size()), ProcessCount + 1);
        QCOMPARE(problems, QStringList());
        QString reason;
        QVERIFY2(bench->unplug("COMMON", &reason) && bench->plug("COMMON", &reason), qPrintable(reason));
    }
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == "change") {
        return changeForAWhile(arguments.value(2), arguments.value(3).toInt(), arguments.value(4).toInt());
    }
    tst_ManyProcesses test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_ManyProcesses.moc"
