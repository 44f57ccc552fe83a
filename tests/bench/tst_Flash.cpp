#include "bench/core/FlashChip.h"
#include "tests/bench/TemporaryBench.h"

#include <QtTest>

#include <chrono>
#include <ctime>
#include <thread>

#include <sys/stat.h>

using namespace bench;

/// Writing an image into a drive, and everything that can go wrong with it.
class tst_Flash : public QObject
{
    Q_OBJECT

private slots:
    void aUsbDriveRunsItsNewFirmwareAfterARestart();
    void aFireWireDriveRunsItsNewFirmwareAtOnce();
    void takesExactlyItsRateWithoutBusyWaiting();
    void refusesBeforeErasing_data();
    void refusesBeforeErasing();
    void refusesEveryTruncatedImage();
    void faultsTearTheFlash_data();
    void faultsTearTheFlash();
    void aFaultForOnceLetsTheNextFlashThrough();
    void imageFaultsRefuseAndKeepTheFirmware_data();
    void imageFaultsRefuseAndKeepTheFirmware();
    void isTornWhenUnpluggedMeanwhile();
    void isTornWhenReplacedMeanwhile();
    void showsProgress();
    void aTornDriveCanBeFlashedAgain();
    void refusesASecondWriter();
};

void tst_Flash::aUsbDriveRunsItsNewFirmwareAfterARestart()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY2(bench->flash("A", 1, bench.image("Pebble"), &reason), qPrintable(reason));
    const QString newest = findModel("Pebble")->newestFirmware;
    QCOMPARE(bench.drive("A").flashFirmware, newest);
    QCOMPARE(bench.drive("A").runningFirmware, QString("0.9"));
    QCOMPARE(bench->state(bench.drive("A")), DriveState::RestartNeeded);
    QCOMPARE(bench->record(bench.drive("A")).firmwareStatus, 1);
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench.drive("A").runningFirmware, newest);
    QCOMPARE(bench->record(bench.drive("A")).firmwareStatus, 2);
    QCOMPARE(bench->record(bench.drive("A")).configurationStatus, 2);
    // Both parts of the chip hold what the image holds.
    FirmwareImage image;
    QVERIFY(FirmwareImage::read(bench.image("Pebble"), &image, &reason));
    FlashChip chip(bench->chipFile("A"), FlashChip::Read);
    QCOMPARE(chip.read(FlashChip::PageSize, int(image.firmware.size())), image.firmware);
    QCOMPARE(chip.read(FlashChip::Configuration.start + FlashChip::PageSize, int(image.configuration.size())),
        image.configuration);
}

void tst_Flash::aFireWireDriveRunsItsNewFirmwareAtOnce()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Harbour FireWire");
    QString reason;
    QVERIFY2(bench->flash("A", 5, bench.image("Harbour FireWire"), &reason), qPrintable(reason));
    QCOMPARE(bench.drive("A").runningFirmware, findModel("Harbour FireWire")->newestFirmware);
    QCOMPARE(bench->record(bench.drive("A")).firmwareStatus, 2);
    QCOMPARE(bench->state(bench.drive("A")), DriveState::Ready);
}

void tst_Flash::takesExactlyItsRateWithoutBusyWaiting()
{
    // Never faster than its rate; the best of five, since a busy machine makes any flash late.
    double seconds = 2;
    double processorSeconds = 1;
    for (int attempt = 0; attempt < 5 && seconds >= 1.05; ++attempt) {
        TemporaryBench bench;
        // The image holds 3500 bytes.
        bench.addOutdated("A", "Pebble", 3500);
        QString reason;
        const auto begin = std::chrono::steady_clock::now();
        const std::clock_t processorBegin = std::clock();
        QVERIFY2(bench->flash("A", 1, bench.image("Pebble"), &reason), qPrintable(reason));
        seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        processorSeconds = double(std::clock() - processorBegin) / CLOCKS_PER_SEC;
        QVERIFY2(seconds > 0.95, qPrintable(QString::number(seconds)));
    }
    QVERIFY2(seconds < 1.05, qPrintable(QString::number(seconds)));
    QVERIFY2(processorSeconds < 0.3, qPrintable(QString::number(processorSeconds)));
}

void tst_Flash::refusesBeforeErasing_data()
{
    QTest::addColumn<QString>("serial");
    QTest::addColumn<int>("chipset");
    QTest::addColumn<QString>("image");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no such drive") << "B" << 1 << "pebble.tfw"
                                   << "no such drive is attached";
    QTest::newRow("unplugged drive") << "U" << 1 << "pebble.tfw"
                                     << "no such drive is attached";
    QTest::newRow("another bridge's updater") << "A" << 3 << "harbour.tfw"
                                              << "the drive's bridge is Asm1051, not Asm1053";
    QTest::newRow("another bridge's image") << "A" << 1 << "harbour.tfw"
                                            << "is for the bridge Asm1053";
    QTest::newRow("missing image") << "A" << 1 << "nothing.tfw"
                                   << "No such file";
    QTest::newRow("folder") << "A" << 1 << "."
                            << "is a folder";
    QTest::newRow("FIFO") << "A" << 1 << "fifo.tfw"
                          << "not a regular file";
    QTest::newRow("foreign") << "A" << 1 << "foreign.tfw"
                             << "does not begin with";
    QTest::newRow("damaged") << "A" << 1 << "damaged.tfw"
                             << "digest of the firmware";
}

void tst_Flash::refusesBeforeErasing()
{
    QFETCH(QString, serial);
    QFETCH(int, chipset);
    QFETCH(QString, image);
    QFETCH(QString, reason);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("U", "Pebble");
    QString found;
    QVERIFY(bench->unplug("U", &found));
    QCOMPARE(::mkfifo((bench.imageFolder() + "/fifo.tfw").toUtf8().constData(), 0600), 0);
    QByteArray damaged;
    QVERIFY(readFile(bench.image("Pebble"), 10000, &damaged, &found));
    damaged[500] = static_cast<char>(damaged.at(500) ^ 1);
    QVERIFY(replaceFile(bench.imageFolder() + "/damaged.tfw", damaged, &found));
    QVERIFY(replaceFile(bench.imageFolder() + "/foreign.tfw", QByteArray(5000, 'x'), &found));
    const auto before = bench.content();
    QVERIFY(!bench->flash(serial, chipset, bench.imageFolder() + '/' + image, &found));
    QVERIFY2(found.contains(reason), qPrintable(found));
    QCOMPARE(bench.content(), before);
}

void tst_Flash::refusesEveryTruncatedImage()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QByteArray whole;
    QVERIFY(readFile(bench.image("Pebble"), 10000, &whole, &reason));
    const auto before = bench.content();
    for (int length = 0; length < whole.size(); length += length < 200 ? 1 : 37) {
        QVERIFY(replaceFile(bench.imageFolder() + "/short.tfw", whole.left(length), &reason));
        QVERIFY(!bench->flash("A", 1, bench.imageFolder() + "/short.tfw", &reason));
    }
    QCOMPARE(bench.content(), before);
}

void tst_Flash::faultsTearTheFlash_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<std::int64_t>("written");
    QTest::addColumn<bool>("plugged");
    QTest::newRow("error at once") << "flash-error" << qint64(0) << std::int64_t(0) << true;
    QTest::newRow("error within a page") << "flash-error" << qint64(1000) << std::int64_t(1000) << true;
    QTest::newRow("error beyond the end") << "flash-error" << qint64(99999) << std::int64_t(3500) << true;
    QTest::newRow("verify error") << "verify-error" << qint64(0) << std::int64_t(3500) << true;
    QTest::newRow("pulled out at once") << "pulled-out" << qint64(0) << std::int64_t(0) << false;
    QTest::newRow("pulled out") << "pulled-out" << qint64(3100) << std::int64_t(3100) << false;
}

void tst_Flash::faultsTearTheFlash()
{
    QFETCH(QString, fault);
    QFETCH(qint64, bytes);
    QFETCH(std::int64_t, written);
    QFETCH(bool, plugged);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault(qPrintable(fault), bytes), &reason));
    QVERIFY(!bench->flash("A", 1, bench.image("Pebble"), &reason));
    QVERIFY(!reason.isEmpty());
    Drive drive = bench.drive("A");
    QCOMPARE(drive.bytesWritten, written);
    QCOMPARE(drive.plugged, plugged);
    QVERIFY(drive.torn);
    QCOMPARE(int(drive.faults.size()), 1);
    if (!plugged) {
        QVERIFY(bench->plug("A", &reason));
        drive = bench.drive("A");
    }
    QCOMPARE(bench->state(drive), DriveState::BootRom);
    QCOMPARE(bench->record(drive).firmwareStatus, 3);
    QCOMPARE(bench->record(drive).configurationStatus, 3);
    FlashChip chip(bench->chipFile("A"), FlashChip::Read);
    QCOMPARE(chip.version(FlashChip::Firmware), QString());
}

void tst_Flash::aFaultForOnceLetsTheNextFlashThrough()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    for (const char *fault : {"flash-error", "verify-error", "truncated-image", "wrong-image"}) {
        QVERIFY(bench->setFault("A", numberFault(fault, 1, true), &reason));
        bench->flash(
            "A", 1, bench.imageFolder() + '/' + bench->record(bench.drive("A")).firmwareFileName, &reason);
        QVERIFY2(bench.drive("A").faults.isEmpty(), fault);
        QVERIFY2(bench->flash("A", 1, bench.image("Pebble"), &reason), qPrintable(reason));
    }
    QVERIFY(bench->setFault("A", numberFault("pulled-out", 1, true), &reason));
    QVERIFY(!bench->flash("A", 1, bench.image("Pebble"), &reason));
    QVERIFY(bench->plug("A", &reason));
    QVERIFY2(bench->flash("A", 1, bench.image("Pebble"), &reason), qPrintable(reason));
}

void tst_Flash::imageFaultsRefuseAndKeepTheFirmware_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<qint64>("bytes");
    QTest::newRow("truncated") << "truncated-image" << qint64(0);
    QTest::newRow("truncated in the header") << "truncated-image" << qint64(20);
    QTest::newRow("truncated beyond its end") << "truncated-image" << qint64(2147483647);
    QTest::newRow("wrong") << "wrong-image" << qint64(0);
}

void tst_Flash::imageFaultsRefuseAndKeepTheFirmware()
{
    QFETCH(QString, fault);
    QFETCH(qint64, bytes);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault(qPrintable(fault), bytes), &reason));
    QStringList problems;
    const QString image = bench.imageFolder() + '/' + bench->query(&problems).first().firmwareFileName;
    QVERIFY(QFile::exists(image));
    const auto before = bench.content();
    QVERIFY(!bench->flash("A", 1, image, &reason));
    QCOMPARE(bench.content(), before);
    QCOMPARE(bench->state(bench.drive("A")), DriveState::Ready);
}

void tst_Flash::isTornWhenUnpluggedMeanwhile()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 4000);
    QString reason;
    bool done = true;
    std::thread writer([&] { done = bench->flash("A", 1, bench.image("Pebble"), &reason); });
    QString ignored;
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    QCOMPARE(bench->state(bench.drive("A")), DriveState::Writing);
    // Plugged in again at once: the drive that is back is not the one that was being written.
    const bool replugged = bench->unplug("A", &ignored) && bench->plug("A", &ignored);
    writer.join();
    QVERIFY(replugged);
    QVERIFY(!done);
    QVERIFY2(reason.contains("pulled out"), qPrintable(reason));
    QCOMPARE(bench->state(bench.drive("A")), DriveState::BootRom);
}

void tst_Flash::isTornWhenReplacedMeanwhile()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 4000);
    QString reason;
    bool done = true;
    std::thread writer([&] { done = bench->flash("A", 1, bench.image("Pebble"), &reason); });
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    QString ignored;
    const bool removed = bench->remove("A", &ignored);
    bench.addOutdated("A", "Pebble");
    writer.join();
    QVERIFY(removed);
    QVERIFY(!done);
    QCOMPARE(bench->state(bench.drive("A")), DriveState::Ready);
    QCOMPARE(bench.drive("A").flashFirmware, QString("0.9"));
}

void tst_Flash::showsProgress()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 7000);
    QString reason;
    std::thread writer([&] { bench->flash("A", 1, bench.image("Pebble"), &reason); });
    std::int64_t last = -1;
    int steps = 0;
    while (bench.drive("A").flashFirmware != findModel("Pebble")->newestFirmware && reason.isEmpty()) {
        const Drive drive = bench.drive("A");
        if (drive.torn) {
            QVERIFY(drive.bytesWritten >= last);
            QCOMPARE(drive.bytesToWrite, std::int64_t(3500));
            steps += drive.bytesWritten > last;
            last = drive.bytesWritten;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    writer.join();
    QVERIFY2(steps >= 5, qPrintable(QString::number(steps)));
    QCOMPARE(bench.drive("A").bytesWritten, std::int64_t(3500));
}

void tst_Flash::aTornDriveCanBeFlashedAgain()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("flash-error", 500, true), &reason));
    QVERIFY(!bench->flash("A", 1, bench.image("Pebble"), &reason));
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QVERIFY2(bench->flash("A", 1, bench.image("Pebble"), &reason), qPrintable(reason));
    QCOMPARE(bench->state(bench.drive("A")), DriveState::RestartNeeded);
    QCOMPARE(bench->record(bench.drive("A")).firmwareStatus, 3);
    QVERIFY(bench->unplug("A", &reason) && bench->plug("A", &reason));
    QCOMPARE(bench->record(bench.drive("A")).firmwareStatus, 2);
}

void tst_Flash::refusesASecondWriter()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 5000);
    QString reason;
    bool done = false;
    std::thread writer([&] { done = bench->flash("A", 1, bench.image("Pebble"), &reason); });
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    QString refused;
    const bool second = bench->flash("A", 1, bench.image("Pebble"), &refused);
    writer.join();
    QVERIFY(!second);
    QVERIFY2(refused.contains("somebody else"), qPrintable(refused));
    QVERIFY2(done, qPrintable(reason));
}

QTEST_GUILESS_MAIN(tst_Flash)
#include "tst_Flash.moc"
