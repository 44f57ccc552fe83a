#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace bench;

class tst_FirmwareImage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void comesBackAsItWas();
    void isTheSameForTheSameModelAndVersions();
    void refusesEveryTruncation();
    void refusesEveryChangedByte();
    void refusesHeaderFields_data();
    void refusesHeaderFields();
    void refusesFiles_data();
    void refusesFiles();
    void readsAtMostTheLimit();

private:
    FirmwareImage image;
    QByteArray file;
};

void tst_FirmwareImage::init()
{
    image = FirmwareImage::forModel(*findModel("Pebble"), "2.14", "5");
    image.firmware.truncate(700);
    image.configuration.truncate(90);
    file = image.encode();
}

void tst_FirmwareImage::comesBackAsItWas()
{
    FirmwareImage read;
    QString reason;
    QVERIFY2(FirmwareImage::decode(file, &read, &reason), qPrintable(reason));
    QCOMPARE(read.bridge, 1);
    QCOMPARE(read.firmwareVersion, QString("2.14"));
    QCOMPARE(read.configurationRevision, QString("5"));
    QCOMPARE(read.firmware, image.firmware);
    QCOMPARE(read.configuration, image.configuration);
}

void tst_FirmwareImage::isTheSameForTheSameModelAndVersions()
{
    const Model &model = *findModel("Breakwater");
    QCOMPARE(
        FirmwareImage::forModel(model, "1", "2").encode(), FirmwareImage::forModel(model, "1", "2").encode());
    QVERIFY(FirmwareImage::forModel(model, "1", "2").firmware
        != FirmwareImage::forModel(model, "2", "2").firmware);
}

void tst_FirmwareImage::refusesEveryTruncation()
{
    for (int length = 0; length < file.size(); ++length) {
        FirmwareImage read;
        QString reason;
        QVERIFY2(
            !FirmwareImage::decode(file.left(length), &read, &reason), qPrintable(QString::number(length)));
        QVERIFY(!reason.isEmpty() && !reason.contains('\n'));
        QVERIFY(read.firmware.isEmpty());
    }
    QString reason;
    FirmwareImage read;
    QVERIFY(!FirmwareImage::decode(file + 'x', &read, &reason));
    QVERIFY(reason.contains("after its end"));
}

void tst_FirmwareImage::refusesEveryChangedByte()
{
    for (int position = 0; position < file.size(); ++position) {
        // A changed version is still a version: nothing but the payloads is signed.
        const bool inTexts = position >= 16 && position < 80;
        // Another bridge that exists may come out of one bit.
        const bool inBridge = position == 12;
        if (inTexts || inBridge) {
            continue;
        }
        QByteArray changed = file;
        changed[position] = static_cast<char>(changed.at(position) ^ 0x10);
        FirmwareImage read;
        QString reason;
        QVERIFY2(!FirmwareImage::decode(changed, &read, &reason), qPrintable(QString::number(position)));
    }
}

void tst_FirmwareImage::refusesHeaderFields_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    QTest::newRow("magic") << 0 << QByteArray("PK") << "does not begin with";
    QTest::newRow("format version") << 8 << QByteArray("\2") << "format version 2";
    QTest::newRow("bridge none") << 12 << QByteArray(1, '\0') << "unknown bridge, code 0";
    QTest::newRow("bridge unknown") << 12 << QByteArray("\4") << "unknown bridge, code 4";
    QTest::newRow("bridge negative") << 12 << QByteArray("\xff\xff\xff\xff") << "unknown bridge, code -1";
    QTest::newRow("no firmware version") << 16 << QByteArray(32, '\0') << "no valid firmware version";
    QTest::newRow("bytes after the version") << 30 << QByteArray("x") << "no valid firmware version";
    QTest::newRow("no revision") << 48 << QByteArray(32, '\0') << "no valid configuration revision";
    QTest::newRow("no firmware") << 80 << QByteArray(4, '\0') << "firmware of 0 bytes";
    QTest::newRow("huge firmware") << 80 << QByteArray("\xff\xff\xff\xff") << "firmware of 4294967295 bytes";
    QTest::newRow("no configuration") << 84 << QByteArray(4, '\0') << "configuration of 0 bytes";
    QTest::newRow("huge configuration")
        << 84 << QByteArray("\xff\xff\xff\x7f") << "configuration of 2147483647";
    QTest::newRow("firmware digest") << 88 << QByteArray(32, 'x') << "digest of the firmware";
    QTest::newRow("configuration digest") << 120 << QByteArray(32, 'x') << "digest of the configuration";
}

void tst_FirmwareImage::refusesHeaderFields()
{
    QFETCH(int, position);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    file.replace(position, int(bytes.size()), bytes);
    FirmwareImage read;
    QString found;
    QVERIFY(!FirmwareImage::decode(file, &read, &found));
    QVERIFY2(found.contains(reason), qPrintable(found));
}

void tst_FirmwareImage::refusesFiles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("reason");
    QTest::newRow("missing") << "missing"
                             << "No such file";
    QTest::newRow("folder") << "folder"
                            << "is a folder";
    QTest::newRow("FIFO") << "fifo"
                          << "not a regular file";
    QTest::newRow("empty") << "empty"
                           << "is empty";
    QTest::newRow("1 GiB") << "large"
                           << "too large";
}

void tst_FirmwareImage::refusesFiles()
{
    QFETCH(QString, kind);
    QFETCH(QString, reason);
    QTemporaryDir folder;
    const QString path = folder.filePath("image.tfw");
    QFile handle(path);
    if (kind == "folder") {
        QVERIFY(QDir().mkdir(path));
    } else if (kind == "fifo") {
        QCOMPARE(::mkfifo(path.toUtf8().constData(), 0600), 0);
    } else if (kind != "missing") {
        QVERIFY(handle.open(QIODevice::WriteOnly));
        QVERIFY(handle.resize(kind == "large" ? qint64(1) << 30 : 0));
    }
    FirmwareImage read;
    QString found;
    QVERIFY(!FirmwareImage::read(path, &read, &found));
    QVERIFY2(found.contains(reason), qPrintable(found));
}

void tst_FirmwareImage::readsAtMostTheLimit()
{
    QTemporaryDir folder;
    QString reason;
    QVERIFY(replaceFile(folder.filePath("image.tfw"), file, &reason));
    FirmwareImage read;
    QVERIFY(FirmwareImage::read(folder.filePath("image.tfw"), &read, &reason));
    QVERIFY(!FirmwareImage::read(folder.filePath("image.tfw"), &read, &reason, 300));
    QVERIFY2(reason.contains("truncated"), qPrintable(reason));
}

QTEST_APPLESS_MAIN(tst_FirmwareImage)
#include "tst_FirmwareImage.moc"
