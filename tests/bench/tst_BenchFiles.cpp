#include "bench/core/Companion.h"
#include "bench/core/Drive.h"
#include "bench/core/Host.h"
#include "bench/core/Text.h"
#include "tests/bench/TemporaryBench.h"

#include <QtTest>

#include <sys/stat.h>

using namespace bench;

/// The files of a bench: how they read back, and what becomes of those that are not as they must be.
class tst_BenchFiles : public QObject
{
    Q_OBJECT

private slots:
    void aDriveComesBackAsItWas();
    void everyByteComesBackInATextAndInAFileName();
    void refusesADriveFile_data();
    void refusesADriveFile();
    void refusesEveryTruncation();
    void aMalformedFileIsLeftAloneAndPassedOver();
    void aFileThatIsNoFileIsPassedOver();
    void aHostComesBackAsItWas();
    void aMalformedHostIsLeftAlone();
    void escapesText();
};

namespace {

Drive exampleDrive()
{
    Drive drive;
    drive.serial = "TV0001PEBBLE";
    drive.model = "Pebble";
    drive.chipset = 1;
    drive.reportedSerial = "TV0001PEBBLE";
    drive.runningFirmware = "2.07";
    drive.faults = {numberFault("flash-error", 4096, true), numberFault("verify-error"),
        textFault("text", QString(QChar(0)) + QChar(0xFF), "modelName"), numberFault("chipset", -1)};
    return drive;
}

} // namespace

void tst_BenchFiles::aDriveComesBackAsItWas()
{
    const Drive drive = exampleDrive();
    Drive read;
    QString problem;
    QVERIFY2(Drive::decode(drive.encode(), &read, &problem), qPrintable(problem));
    QVERIFY(read == drive);
    QCOMPARE(int(read.faults.size()), 4);
    QCOMPARE(read.faults.at(2).text, QString(QChar(0)) + QChar(0xFF));
    QCOMPARE(read.faults.at(3).number, qint64(-1));
}

void tst_BenchFiles::everyByteComesBackInATextAndInAFileName()
{
    QString all;
    for (int byte = 0; byte < 256; ++byte) {
        all += QChar(byte);
    }
    TemporaryBench bench;
    for (int start = 0; start < 256; start += 64) {
        const QString serial = all.mid(start, 64);
        bench.addOutdated(serial, "Pebble");
        QString reason;
        QVERIFY(bench->setFault(serial, textFault("text", all, "auxiliaryText1"), &reason));
        QCOMPARE(bench.drive(serial).serial, serial);
        QCOMPARE(bench.drive(serial).faults.first().text, all);
    }
    QStringList problems;
    QCOMPARE(int(bench->drives(&problems).size()), 4);
    QCOMPARE(problems, QStringList());
}

void tst_BenchFiles::refusesADriveFile_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QString>("problem");
    QTest::newRow("no JSON") << QByteArray("{") << QByteArray("[") << ":";
    QTest::newRow("missing member") << QByteArray("\"plugged\": true,") << QByteArray()
                                    << "1:1: \"plugged\" is missing";
    QTest::newRow("unknown member") << QByteArray("\"plugged\"")
                                    << QByteArray("\"pluged\": true, \"plugged\"")
                                    << "\"pluged\" is not a known member";
    QTest::newRow("type of truth") << QByteArray("\"plugged\": true") << QByteArray("\"plugged\": 1")
                                   << "\"plugged\" must be true or false";
    QTest::newRow("type of text") << QByteArray("\"2.07\"") << QByteArray("2.07")
                                  << "\"runningFirmware\" must be a text";
    QTest::newRow("type of number") << QByteArray("\"chipset\": 1") << QByteArray("\"chipset\": \"1\"")
                                    << "\"chipset\" must be a whole number";
    QTest::newRow("fraction") << QByteArray("\"chipset\": 1") << QByteArray("\"chipset\": 1.5")
                              << "\"chipset\" must be a whole number";
    QTest::newRow("too large") << QByteArray("\"chipset\": 1") << QByteArray("\"chipset\": 1e300")
                               << "\"chipset\" must be a whole number";
    QTest::newRow("rate of nothing") << QByteArray("\"flashRate\": 16384") << QByteArray("\"flashRate\": 0")
                                     << "\"flashRate\" must be a whole number from 1";
    QTest::newRow("character") << QByteArray("\"2.07\"") << QByteArray("\"\\u20ac\"")
                               << "must hold characters U+0000 to U+00FF";
    QTest::newRow("model") << QByteArray("\"Pebble\"") << QByteArray("\"Boulder\"")
                           << "\"model\" names no model";
    QTest::newRow("fault") << QByteArray("\"verify-error\"") << QByteArray("\"smoke\"")
                           << "\"faults\" entry 2: \"fault\" names no known fault";
    QTest::newRow("fault value") << QByteArray("\"value\": 4096") << QByteArray("\"value\": -4096")
                                 << "\"faults\" entry 1: \"value\" must be a whole number from 0";
    QTest::newRow("fault field") << QByteArray("\"modelName\"") << QByteArray("\"chipset\"")
                                 << "\"faults\" entry 3: \"field\" names no known field";
    QTest::newRow("faults") << QByteArray("\"faults\": [") << QByteArray("\"faults\": 1, \"more\": [")
                            << "\"faults\" must be a list";
}

void tst_BenchFiles::refusesADriveFile()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QString, problem);
    QByteArray file = exampleDrive().encode();
    QVERIFY(file.contains(from));
    file.replace(file.indexOf(from), from.size(), to);
    Drive read;
    QString found;
    QVERIFY(!Drive::decode(file, &read, &found));
    QVERIFY2(found.contains(problem), qPrintable(found));
    QVERIFY2(QRegularExpression("^[0-9]+:[0-9]+: ").match(found).hasMatch(), qPrintable(found));
    QVERIFY(!found.contains('\n'));
    QCOMPARE(read.serial, QString());
}

void tst_BenchFiles::refusesEveryTruncation()
{
    const QByteArray file = exampleDrive().encode().trimmed();
    for (int length = 0; length < file.size(); ++length) {
        Drive read;
        QString problem;
        QVERIFY(!Drive::decode(file.left(length), &read, &problem));
        QVERIFY(!problem.isEmpty());
    }
}

void tst_BenchFiles::aMalformedFileIsLeftAloneAndPassedOver()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Pebble");
    QString reason;
    const QByteArray broken = "{\n  \"serial\": \"A\",\n  oops\n}\n";
    QVERIFY(replaceFile(bench->driveFile("A"), broken, &reason));
    QStringList problems;
    const QVector<DriveRecord> records = bench->query(&problems);
    QCOMPARE(int(records.size()), 1);
    QCOMPARE(records.first().serialNumber, QString("B"));
    QCOMPARE(int(problems.size()), 1);
    QVERIFY2(problems.first().startsWith(bench->driveFile("A") + ":3:"), qPrintable(problems.first()));
    QVERIFY(!bench->unplug("A", &reason));
    QVERIFY2(reason.contains(":3:"), qPrintable(reason));
    QByteArray left;
    QVERIFY(readFile(bench->driveFile("A"), 1000, &left, &reason));
    QCOMPARE(left, broken);

    // A file under another drive's name is no drive of its own.
    QVERIFY(replaceFile(bench->driveFile("A"), bench.drive("B").encode(), &reason));
    problems.clear();
    QCOMPARE(int(bench->drives(&problems).size()), 1);
    QVERIFY2(
        problems.first().contains("is not the one that the file is named for"), qPrintable(problems.first()));
    QVERIFY2(bench->remove("A", &reason), qPrintable(reason));
}

void tst_BenchFiles::aFileThatIsNoFileIsPassedOver()
{
    TemporaryBench bench;
    bench.addOutdated("B", "Pebble");
    QCOMPARE(::mkfifo(bench->driveFile("A").toUtf8().constData(), 0600), 0);
    QVERIFY(QDir().mkdir(bench->driveFile("C")));
    QStringList problems;
    QCOMPARE(int(bench->drives(&problems).size()), 1);
    QCOMPARE(int(problems.size()), 2);
    QVERIFY2(problems.first().endsWith(":1:1: is not a regular file"), qPrintable(problems.first()));
    QVERIFY2(problems.last().endsWith(":1:1: is a folder"), qPrintable(problems.last()));
}

void tst_BenchFiles::aHostComesBackAsItWas()
{
    Host host;
    host.companionInstalled = true;
    host.processes = {{4711, "/Applications/Tarvo Quaydesk.app"}};
    Host read;
    QString problem;
    QVERIFY2(Host::decode(host.encode(), &read, &problem), qPrintable(problem));
    QVERIFY(read.companionInstalled);
    QVERIFY(!read.serviceSubmitted);
    QCOMPARE(int(read.processes.size()), 1);
    QCOMPARE(read.processes.first().id, std::int64_t(4711));
}

void tst_BenchFiles::aMalformedHostIsLeftAlone()
{
    TemporaryBench bench;
    QString reason;
    QVERIFY(replaceFile(bench.folder() + "/host.json", "{}", &reason));
    QStringList problems;
    QVERIFY(!bench->host(&problems).companionInstalled);
    QCOMPARE(int(problems.size()), 1);
    QVERIFY2(problems.first().endsWith("host.json:1:1: \"companionInstalled\" is missing"),
        qPrintable(problems.first()));
    QVERIFY(!Companion(bench.folder()).install(&reason));
    QCOMPARE(bench.content().value("/host.json"), QByteArray("{}"));
}

void tst_BenchFiles::escapesText()
{
    const QString text = QString("a\\b") + QChar(0) + QChar('\n') + QChar(0xE9);
    QCOMPARE(escaped(text), QString("a\\x5Cb\\x00\\x0A\\xE9"));
    QString plain;
    QVERIFY(unescape(escaped(text), &plain));
    QCOMPARE(plain, text);
    for (const char *wrong : {"\\", "\\x", "\\x1", "\\xZZ", "\\n"}) {
        QVERIFY2(!unescape(wrong, &plain), wrong);
    }
    QVERIFY(!unescape(QString(QChar(0x20AC)), &plain));
}

QTEST_APPLESS_MAIN(tst_BenchFiles)
#include "tst_BenchFiles.moc"
