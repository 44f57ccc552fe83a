#include "devices/DeviceInfo.h"
#include <Asmedia105X.h>
#include <DeviceDiscovery.h>
#include <MacDevice.h>
#include <OxSemiFireWire.h>
#include "tests/bench/Programs.h"
#include "tests/bench/TemporaryBench.h"

#include <QCoreApplication>
#include <QtTest>

#include <atomic>
#include <thread>

using namespace bench;

/// The maker's libraries as the bench plays them.
class tst_Platform : public QObject
{
    Q_OBJECT

private slots:
    void fillsTheVectorAnew();
    void handsOnEveryByte();
    void updatersFlashTheirBridge_data();
    void updatersFlashTheirBridge();
    void unmountsTheDrive();
    // Before the first test that starts a process: the thread sanitizer starts no threads after that.
    void serveManyThreadsAtOnce();
    void aMissingBenchIsReportedOnceAndEmpty();
    void aMalformedDriveIsReportedOnce();
    void standInsComeFirstOnThePath();
};

namespace {

std::vector<DeviceInfo> discover()
{
    std::vector<DeviceInfo> devices;
    DeviceDiscovery discovery;
    discovery.getTarvoDevice(devices);
    return devices;
}

bool update(int chipset, const std::string &serialNumber, const std::string &image)
{
    switch (chipset) {
    case Chipset::Asm1051:
        return Asm1051(serialNumber).updateDevice(image);
    case Chipset::Asm1051E:
        return Asm1051E(serialNumber).updateDevice(image);
    case Chipset::Asm1053:
        return Asm1053(serialNumber).updateDevice(image);
    case Chipset::OxSemiFireWire934:
        return OxSemiFireWire934(serialNumber).updateDevice(image);
    default:
        return OxSemiFireWire944(serialNumber).updateDevice(image);
    }
}

} // namespace

void tst_Platform::fillsTheVectorAnew()
{
    TemporaryBench bench;
    qputenv("TARVO_BENCH", bench.folder().toUtf8());
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Harbour (FireWire 800)");
    std::vector<DeviceInfo> devices(5);
    DeviceDiscovery discovery;
    discovery.getTarvoDevice(devices);
    discovery.getTarvoDevice(devices);
    QCOMPARE(int(devices.size()), 2);
    QCOMPARE(devices[0].serialNumber, std::string("A"));
    QCOMPARE(int(devices[0].vendorId), int(Vendor::Usb));
    QCOMPARE(int(devices[0].productId), 0x1A20);
    QCOMPARE(devices[0].firmwareVersion, std::string("0.9"));
    QCOMPARE(devices[0].firmwareFileName, std::string("pebble.tfw"));
    QCOMPARE(devices[0].chipsetType, Chipset::Asm1051);
    QCOMPARE(devices[0].firmwareStatus, Status::UpdateRequired);
    QCOMPARE(devices[1].modelName, std::string("Harbour (FireWire 800)"));
    QCOMPARE(int(devices[1].vendorId), int(Vendor::FireWire));
    QCOMPARE(devices[1].chipsetType, Chipset::OxSemiFireWire944);
    QString reason;
    QVERIFY(bench->unplug("A", &reason) && bench->unplug("B", &reason));
    discovery.getTarvoDevice(devices);
    QVERIFY(devices.empty());
}

void tst_Platform::handsOnEveryByte()
{
    TemporaryBench bench;
    qputenv("TARVO_BENCH", bench.folder().toUtf8());
    const QString serial = QString("S") + QChar(0xE9) + QChar(0) + QChar(0x80);
    bench.addOutdated(serial, "Pebble");
    QCOMPARE(discover().front().serialNumber, std::string("S\xe9\0\x80", 4));
    QVERIFY(update(1, std::string("S\xe9\0\x80", 4), bench.image("Pebble").toStdString()));
    QVERIFY(!update(1, std::string("S\xe9"), bench.image("Pebble").toStdString()));
}

void tst_Platform::updatersFlashTheirBridge_data()
{
    QTest::addColumn<QString>("model");
    for (const char *model : {"Pebble", "Lamina", "Harbour", "Pebble Triple", "breakwater Mk II"}) {
        QTest::newRow(model) << model;
    }
}

void tst_Platform::updatersFlashTheirBridge()
{
    QFETCH(QString, model);
    TemporaryBench bench;
    qputenv("TARVO_BENCH", bench.folder().toUtf8());
    bench.addOutdated("A", model);
    for (int chipset : {1, 2, 3, 5, 6}) {
        const bool fits = chipset == findModel(model)->chipset;
        QCOMPARE(update(chipset, "A", bench.image(model).toStdString()), fits);
    }
    QCOMPARE(bench.drive("A").flashFirmware, findModel(model)->newestFirmware);
}

void tst_Platform::unmountsTheDrive()
{
    TemporaryBench bench;
    qputenv("TARVO_BENCH", bench.folder().toUtf8());
    bench.addOutdated("A", "Pebble");
    Asm1051 updater("A");
    QCOMPARE(updater.macDevice->unmountDisk(), 1);
    QVERIFY(!bench.drive("A").mounted);
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("unmount-returns", -2), &reason));
    QCOMPARE(updater.macDevice->unmountDisk(), -2);
    QCOMPARE(MacDevice("B").unmountDisk(), 0);
}

void tst_Platform::aMissingBenchIsReportedOnceAndEmpty()
{
    const Ended ended =
        runProgram(QCoreApplication::applicationFilePath(), {"discover", "3"}, "/nowhere/bench");
    QCOMPARE(ended.status, 0);
    QCOMPARE(ended.output, QByteArray("0 0 0 "));
    QCOMPARE(ended.errors.count('\n'), 1);
    QVERIFY2(ended.errors.contains("/nowhere/bench") && ended.errors.contains("No such file"),
        ended.errors.constData());
}

void tst_Platform::aMalformedDriveIsReportedOnce()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Pebble");
    QString reason;
    QVERIFY(replaceFile(bench->driveFile("A"), "{\"serial\": 1}", &reason));
    const Ended ended =
        runProgram(QCoreApplication::applicationFilePath(), {"discover", "3"}, bench.folder());
    QCOMPARE(ended.output, QByteArray("1 1 1 "));
    QCOMPARE(ended.errors, (bench->driveFile("A") + ":1:2: \"serial\" must be a text\n").toUtf8());
}

void tst_Platform::serveManyThreadsAtOnce()
{
    TemporaryBench bench;
    qputenv("TARVO_BENCH", bench.folder().toUtf8());
    bench.addOutdated("A", "Pebble", 20000);
    bench.addOutdated("B", "Harbour FireWire", 20000);
    QString reason;
    QVERIFY(bench->setFault("A", numberFault("settle-queries", 1000000), &reason));
    const std::string usbImage = bench.image("Pebble").toStdString();
    const std::string fireWireImage = bench.image("Harbour FireWire").toStdString();
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::atomic<int> flashed{0};
    std::vector<std::thread> threads;
    threads.reserve(5);
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            while (!stop) {
                wrong += discover().size() != 2;
            }
        });
    }
    threads.emplace_back([&] { flashed += update(Chipset::Asm1051, "A", usbImage); });
    threads.emplace_back([&] { flashed += update(Chipset::OxSemiFireWire934, "B", fireWireImage); });
    threads.emplace_back([&] {
        while (!stop) {
            wrong += MacDevice("A").unmountDisk() != 1;
        }
    });
    threads[2].join();
    threads[3].join();
    stop = true;
    for (int i : {0, 1, 4}) {
        threads[static_cast<std::size_t>(i)].join();
    }
    QCOMPARE(wrong.load(), 0);
    QCOMPARE(flashed.load(), 2);
    QVERIFY(bench.drive("A").queries > 0);
}

void tst_Platform::standInsComeFirstOnThePath()
{
    const QString tools = QCoreApplication::applicationDirPath() + "/host-tools";
    QCOMPARE(qgetenv("PATH").startsWith(tools.toUtf8() + ':'), isFolder(tools));
    // The environment was there before any test changed it.
    const Ended ended = runProgram(QCoreApplication::applicationFilePath(), {"bench"}, QString());
    QCOMPARE(ended.output, (QCoreApplication::applicationDirPath() + "/bench").toUtf8());
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == "discover") {
        for (int i = 0; i < arguments.value(2).toInt(); ++i) {
            std::printf("%d ", int(discover().size()));
        }
        return 0;
    }
    if (arguments.value(1) == "bench") {
        std::printf("%s", qgetenv("TARVO_BENCH").constData());
        return 0;
    }
    tst_Platform test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Platform.moc"
