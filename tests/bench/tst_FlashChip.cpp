#include "bench/core/FirmwareImage.h"
#include "bench/core/FlashChip.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace bench;

class tst_FlashChip : public QObject
{
    Q_OBJECT

private slots:
    void aMissingFileBecomesABlankChip();
    void programmingOnlyClearsBits();
    void refusesPagesBeyondItsEnd();
    void isTornUntilItIsDescribed();
    void aDamagedPayloadIsTorn();
    void isWrittenByOneAtATime();
    void readingNeedsTheFile();
};

void tst_FlashChip::aMissingFileBecomesABlankChip()
{
    QTemporaryDir folder;
    FlashChip chip(folder.filePath("chip"), FlashChip::Write);
    QVERIFY(chip.isOpen());
    QCOMPARE(chip.read(0, FlashChip::Size), QByteArray(FlashChip::Size, '\xff'));
    QCOMPARE(chip.version(FlashChip::Firmware), QString());
}

void tst_FlashChip::programmingOnlyClearsBits()
{
    QTemporaryDir folder;
    FlashChip chip(folder.filePath("chip"), FlashChip::Write);
    QVERIFY(chip.programPage(1, "\xf0"));
    QVERIFY(chip.programPage(1, "\x3c"));
    QCOMPARE(chip.read(FlashChip::PageSize, 2), QByteArray("\x30\xff"));
    QVERIFY(chip.eraseSector(0));
    QCOMPARE(chip.read(FlashChip::PageSize, 1), QByteArray("\xff"));
}

void tst_FlashChip::refusesPagesBeyondItsEnd()
{
    QTemporaryDir folder;
    FlashChip chip(folder.filePath("chip"), FlashChip::Write);
    QVERIFY(!chip.programPage(FlashChip::Size / FlashChip::PageSize, "x"));
    QVERIFY(!chip.programPage(0, QByteArray(FlashChip::PageSize + 1, 'x')));
    QCOMPARE(chip.read(0, FlashChip::Size), QByteArray(FlashChip::Size, '\xff'));
}

void tst_FlashChip::isTornUntilItIsDescribed()
{
    QTemporaryDir folder;
    FlashChip chip(folder.filePath("chip"), FlashChip::Write);
    QVERIFY(chip.load(FirmwareImage::forModel(*findModel("Lamina"), "3.20", "6")));
    QCOMPARE(chip.version(FlashChip::Firmware), QString("3.20"));
    QCOMPARE(chip.version(FlashChip::Configuration), QString("6"));
    QVERIFY(chip.eraseSector(FlashChip::Configuration.start / FlashChip::SectorSize));
    QCOMPARE(chip.version(FlashChip::Firmware), QString("3.20"));
    QCOMPARE(chip.version(FlashChip::Configuration), QString());
}

void tst_FlashChip::aDamagedPayloadIsTorn()
{
    QTemporaryDir folder;
    FlashChip chip(folder.filePath("chip"), FlashChip::Write);
    QVERIFY(chip.load(FirmwareImage::forModel(*findModel("Lamina"), "3.20", "6")));
    QVERIFY(chip.programPage(5, QByteArray(FlashChip::PageSize, '\0')));
    QCOMPARE(chip.version(FlashChip::Firmware), QString());
}

void tst_FlashChip::isWrittenByOneAtATime()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("chip");
    {
        FlashChip first(path, FlashChip::Write);
        FlashChip second(path, FlashChip::Write);
        QVERIFY(first.isOpen());
        QVERIFY(!second.isOpen());
        QVERIFY(second.reason().contains("somebody else"));
        QVERIFY(FlashChip(path, FlashChip::Read).isOpen());
    }
    QVERIFY(FlashChip(path, FlashChip::Write).isOpen());
}

void tst_FlashChip::readingNeedsTheFile()
{
    QTemporaryDir folder;
    QVERIFY(!FlashChip(folder.filePath("chip"), FlashChip::Read).isOpen());
    FlashChip chip(folder.path(), FlashChip::Read);
    QVERIFY(!chip.isOpen());
    QCOMPARE(chip.reason(), QString("is not a regular file"));
}

QTEST_APPLESS_MAIN(tst_FlashChip)
#include "tst_FlashChip.moc"
