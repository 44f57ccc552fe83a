// SPDX-License-Identifier: MIT
#include "devices/DeviceInfo.h"
#include "tests/bench/TemporaryBench.h"

#include <Asmedia105X.h>
#include <DeviceDiscovery.h>
#include <MacDevice.h>
#include <OxSemiFireWire.h>

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
    void updatersFlashTheirBridge();
    void unmountsTheDrive();
    void serveManyThreadsAtOnce();
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

void useBench(const TemporaryBench &bench)
{
    qputenv("TARVO_BENCH", QByteArray::fromStdString(bench.directory()));
}

} // namespace

void tst_Platform::fillsTheVectorAnew()
{
    TemporaryBench bench;
    useBench(bench);
    bench.addOutdated("A");
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
    unplugDrive(bench.store(), "A");
    unplugDrive(bench.store(), "B");
    discovery.getTarvoDevice(devices);
    QVERIFY(devices.empty());
}

void tst_Platform::handsOnEveryByte()
{
    TemporaryBench bench;
    useBench(bench);
    const std::string serial("S\xe9\0\x80", 4);
    bench.addOutdated(textFromBytes(serial));
    QCOMPARE(discover().front().serialNumber, serial);
    QVERIFY(update(1, serial, bench.image("Pebble")));
    QVERIFY(!update(1, std::string("S\xe9"), bench.image("Pebble")));
}

void tst_Platform::updatersFlashTheirBridge()
{
    for (const char *model : {"Pebble", "Lamina", "Harbour", "Pebble Triple", "breakwater Mk II"}) {
        TemporaryBench bench;
        useBench(bench);
        bench.addOutdated("A", model);
        for (const int chipset : {1, 2, 3, 5, 6}) {
            QCOMPARE(update(chipset, "A", bench.image(model)), chipset == modelNamed(model).chipset);
        }
        QCOMPARE(bench.drive("A").flashFirmware, std::string(modelNamed(model).newestFirmware));
    }
}

void tst_Platform::unmountsTheDrive()
{
    TemporaryBench bench;
    useBench(bench);
    bench.addOutdated("A");
    Asm1051 updater("A");
    QCOMPARE(updater.macDevice->unmountDisk(), 1);
    QVERIFY(!bench.drive("A").mounted);
    bench.setFault("A", "unmount-returns -2");
    QCOMPARE(updater.macDevice->unmountDisk(), -2);
    QCOMPARE(MacDevice("B").unmountDisk(), 0);
}

void tst_Platform::serveManyThreadsAtOnce()
{
    TemporaryBench bench;
    useBench(bench);
    bench.addOutdated("A", "Pebble", 20000);
    bench.addOutdated("B", "Harbour FireWire", 20000);
    bench.setFault("A", "settle-queries 1000000");
    const std::string usbImage = bench.image("Pebble");
    const std::string fireWireImage = bench.image("Harbour FireWire");
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

QTEST_GUILESS_MAIN(tst_Platform)
#include "tst_Platform.moc"
