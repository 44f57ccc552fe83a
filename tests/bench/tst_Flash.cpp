#include "bench/core/BenchDocument.h"
#include "bench/core/Files.h"
#include "bench/core/Flash.h"
#include "tests/bench/Flashing.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

#include <chrono>
#include <ctime>
#include <thread>

#include <sys/stat.h>

using namespace bench;

/// Writing an image into a drive, and what is checked before that.
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
    void imageFaultsRefuseAndKeepTheFirmware_data();
    void imageFaultsRefuseAndKeepTheFirmware();
    void showsProgress();
    void anIncompleteDriveCanBeFlashedAgain();
    void aDriveWithoutAChipIsGivenOne();
    void refusesASecondWriter();
    void anotherWriterTakesOver();
};

void tst_Flash::aUsbDriveRunsItsNewFirmwareAfterARestart()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    QCOMPARE(flash(bench), std::string());
    const std::string newest = findModel("Pebble")->newestFirmware;
    const Drive drive = bench.drive("A");
    QCOMPARE(drive.flashFirmware, newest);
    QCOMPARE(drive.flashConfiguration, std::string(findModel("Pebble")->newestConfiguration));
    QCOMPARE(drive.runningFirmware, std::string("0.9"));
    QCOMPARE(drive.state(), DriveState::RestartNeeded);
    QCOMPARE(drive.heartbeat, std::int64_t(0));
    QCOMPARE(drive.lastUpdate, std::string("succeeded"));
    QVERIFY(now() - drive.lastUpdateAt < 60000);
    QCOMPARE(record(bench).firmwareStatus, Status::UpdateRequired);
    replug(bench);
    QCOMPARE(bench.drive("A").runningFirmware, newest);
    QCOMPARE(record(bench).firmwareStatus, Status::UpToDate);
    QCOMPARE(record(bench).configurationStatus, Status::UpToDate);
    // Both parts of the chip hold what the image holds, and nothing else is left of what was there.
    FlashChip written;
    written.load(FirmwareImage::read(bench.image("Pebble")));
    QVERIFY(chip(bench).content() == written.content());
}

void tst_Flash::aFireWireDriveRunsItsNewFirmwareAtOnce()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Harbour FireWire");
    QCOMPARE(flash(bench, "A", 5, "harbour-firewire.tfw"), std::string());
    QCOMPARE(bench.drive("A").runningFirmware, std::string(findModel("Harbour FireWire")->newestFirmware));
    QCOMPARE(record(bench).firmwareStatus, Status::UpToDate);
    QCOMPARE(record(bench).configurationStatus, Status::UpToDate);
    QCOMPARE(bench.drive("A").state(), DriveState::Ready);
}

void tst_Flash::takesExactlyItsRateWithoutBusyWaiting()
{
    // Never faster than its rate; the best of five, since a busy machine makes any flash late.
    double seconds = 10;
    double processorSeconds = 1;
    for (int attempt = 0; attempt < 5 && seconds >= 1.5; ++attempt) {
        TemporaryBench bench;
        // The image holds 3500 bytes.
        bench.addOutdated("A", "Pebble", 3500);
        const auto begin = std::chrono::steady_clock::now();
        const std::clock_t processorBegin = std::clock();
        QCOMPARE(flash(bench), std::string());
        seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        processorSeconds = double(std::clock() - processorBegin) / CLOCKS_PER_SEC;
        QVERIFY2(seconds > 0.95, qPrintable(QString::number(seconds)));
    }
    QVERIFY2(seconds < 1.5, qPrintable(QString::number(seconds)));
    QVERIFY2(processorSeconds < 0.6, qPrintable(QString::number(processorSeconds)));
}

void tst_Flash::refusesBeforeErasing_data()
{
    QTest::addColumn<QString>("serial");
    QTest::addColumn<int>("chipset");
    QTest::addColumn<QString>("image");
    QTest::addColumn<QString>("reason");
    // An asterisk in front stands for the path of the image.
    QTest::newRow("no such drive") << "B" << 1 << "pebble.tfw"
                                   << "no such drive is attached";
    QTest::newRow("unplugged drive") << "U" << 1 << "pebble.tfw"
                                     << "no such drive is attached";
    QTest::newRow("drive that does not answer") << "S" << 1 << "pebble.tfw"
                                                << "no such drive is attached";
    QTest::newRow("another bridge's updater") << "A" << 3 << "harbour.tfw"
                                              << "the drive's bridge is Asm1051, not Asm1053";
    QTest::newRow("another bridge's image") << "A" << 1 << "harbour.tfw"
                                            << "*: is for the bridge Asm1053, not Asm1051";
    QTest::newRow("missing image") << "A" << 1 << "nothing.tfw"
                                   << "*: No such file or directory";
    QTest::newRow("directory") << "A" << 1 << "."
                               << "*: is a directory";
    QTest::newRow("FIFO") << "A" << 1 << "fifo.tfw"
                          << "*: is not a regular file";
    QTest::newRow("foreign") << "A" << 1 << "foreign.tfw"
                             << "*: is not a firmware image: it does not begin with";
    QTest::newRow("damaged") << "A" << 1 << "damaged.tfw"
                             << "*: is damaged: the digest of the firmware";
    QTest::newRow("line break in a name") << "A" << 1 << "a\nb.tfw"
                                          << "*: No such file or directory";
}

void tst_Flash::refusesBeforeErasing()
{
    QFETCH(QString, serial);
    QFETCH(int, chipset);
    QFETCH(QString, image);
    QFETCH(QString, reason);
    TemporaryBench bench;
    for (const char *name : {"A", "S", "U"}) {
        bench.addOutdated(name, "Pebble");
        bench.lifeCycle().unplug(name);
    }
    bench.lifeCycle().setFault("S", {FaultKind::NoReturn});
    bench.lifeCycle().plug("A");
    bench.lifeCycle().plug("S");
    const std::string directory = bench.imageDirectory() + '/';
    QCOMPARE(::mkfifo((directory + "fifo.tfw").c_str(), 0600), 0);
    std::string damaged = readFile(bench.image("Pebble"), 10000);
    damaged[500] = static_cast<char>(damaged[500] ^ 1);
    writeFile(directory + "damaged.tfw", damaged);
    writeFile(directory + "foreign.tfw", std::string(5000, 'x'));
    const QString before = contentButUpdates(bench);
    const std::string path = directory + image.toStdString();
    const QString found =
        QString::fromStdString(flash(bench, serial.toStdString(), chipset, image.toStdString()));
    const QString expected = reason.replace('*', QString::fromStdString(path).replace('\n', "\\x0A"));
    QVERIFY2(found.startsWith(expected), qPrintable(found));
    QCOMPARE(contentButUpdates(bench), before);
    if (serial != "B") {
        QCOMPARE(QString::fromStdString(bench.drive(serial.toStdString()).lastUpdate), "failed: " + found);
    }
}

void tst_Flash::refusesEveryTruncatedImage()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string whole = readFile(bench.image("Pebble"), 10000);
    const QString before = contentButUpdates(bench);
    for (std::size_t length = 0; length < whole.size(); length += length < 200 ? 1 : 37) {
        writeFile(bench.imageDirectory() + "/short.tfw", whole.substr(0, length));
        QVERIFY2(!flash(bench, "A", 1, "short.tfw").empty(), qPrintable(QString::number(length)));
    }
    QCOMPARE(contentButUpdates(bench), before);
}

void tst_Flash::imageFaultsRefuseAndKeepTheFirmware_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<std::int64_t>("bytes");
    const int truncated = int(FaultKind::TruncatedImage);
    QTest::newRow("truncated") << truncated << std::int64_t(0);
    QTest::newRow("truncated in the header") << truncated << std::int64_t(20);
    QTest::newRow("truncated beyond its end") << truncated << std::int64_t(2147483647);
    QTest::newRow("wrong") << int(FaultKind::WrongImage) << std::int64_t(0);
}

void tst_Flash::imageFaultsRefuseAndKeepTheFirmware()
{
    QFETCH(int, kind);
    QFETCH(std::int64_t, bytes);
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind(kind), bytes));
    const std::string image = bench.discovery().query().front().firmwareFileName;
    QVERIFY(QFile::exists(QString::fromStdString(bench.imageDirectory() + '/' + image)));
    const QString before = contentButUpdates(bench);
    const std::string reason = flash(bench, "A", 1, image);
    QVERIFY2(reason.find('/' + image + ": ") != std::string::npos, reason.c_str());
    QCOMPARE(bench.drive("A").lastUpdate, "failed: " + reason);
    QCOMPARE(contentButUpdates(bench), before);
    QCOMPARE(bench.drive("A").state(), DriveState::Ready);
}

void tst_Flash::showsProgress()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 3500);
    std::thread writer([&] { flash(bench); });
    std::int64_t last = -1;
    int steps = 0;
    while (bench.drive("A").lastUpdate.empty()) {
        const Drive drive = bench.drive("A");
        if (drive.state() == DriveState::Writing) {
            QVERIFY(drive.bytesWritten >= last);
            QCOMPARE(drive.bytesToWrite, std::int64_t(3500));
            steps += drive.bytesWritten > last;
            last = drive.bytesWritten;
            QCOMPARE(drive.progressText(), "being written " + std::to_string(last / 35) + '%');
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    writer.join();
    QVERIFY2(steps >= 5, qPrintable(QString::number(steps)));
    QCOMPARE(bench.drive("A").bytesWritten, std::int64_t(3500));
}

void tst_Flash::anIncompleteDriveCanBeFlashedAgain()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::FlashError, 500, true));
    QVERIFY(!flash(bench).empty());
    replug(bench);
    QCOMPARE(bench.drive("A").state(), DriveState::BootRom);
    QCOMPARE(flash(bench), std::string());
    QCOMPARE(bench.drive("A").state(), DriveState::RestartNeeded);
    QCOMPARE(record(bench).firmwareStatus, 3);
    replug(bench);
    QCOMPARE(record(bench).firmwareStatus, Status::UpToDate);
}

void tst_Flash::aDriveWithoutAChipIsGivenOne()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.execute("DELETE FROM chips");
    QCOMPARE(flash(bench), std::string());
    FlashChip written;
    written.load(FirmwareImage::read(bench.image("Pebble")));
    QVERIFY(chip(bench).content() == written.content());
}

void tst_Flash::refusesASecondWriter()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 2000);
    std::string reason = "none yet";
    std::thread writer([&] { reason = flash(bench); });
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    const std::string second = flash(bench);
    const std::string noted = bench.drive("A").lastUpdate;
    const DriveState state = bench.drive("A").state();
    writer.join();
    QCOMPARE(second, std::string("the drive is being written by another process"));
    QCOMPARE(noted, "failed: " + second);
    QCOMPARE(state, DriveState::Writing);
    QCOMPARE(reason, std::string());
    QCOMPARE(bench.drive("A").lastUpdate, std::string("succeeded"));
}

/// A writer that was not seen for so long that another one has begun leaves the drive to that one.
void tst_Flash::anotherWriterTakesOver()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 3500);
    std::string reason = "none yet";
    std::thread writer([&] { reason = flash(bench); });
    QTRY_VERIFY(bench.drive("A").bytesWritten > 0);
    Drive drive = bench.drive("A");
    ++drive.flashes;
    update(bench, drive);
    writer.join();
    QCOMPARE(reason, std::string("another process has begun to write the drive"));
    drive = bench.drive("A");
    QCOMPARE(drive.state(), DriveState::Writing);
    QVERIFY(drive.flashFirmware.empty());
}

static const TestClass<tst_Flash> flashTests;
#include "tst_Flash.moc"
