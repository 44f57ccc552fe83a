// SPDX-License-Identifier: MIT
#include "devices/SettledDevices.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"

#include <DeviceDiscovery.h>

#include <QtTest>

/// The wait without an end is that of the discovery thread and is tested there.
class tst_SettledDevices : public QObject
{
    Q_OBJECT

private slots:
    void deadlineEndsTheWaitWithWhatIsKnown_data();
    void deadlineEndsTheWaitWithWhatIsKnown();
};

void tst_SettledDevices::deadlineEndsTheWaitWithWhatIsKnown_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<int>("queries");
    QTest::newRow("passed") << 0 << 1;
    QTest::newRow("passes in the first pause") << 300 << 2;
    QTest::newRow("passes in the second pause") << 800 << 3;
}

void tst_SettledDevices::deadlineEndsTheWaitWithWhatIsKnown()
{
    QFETCH(int, milliseconds);
    QFETCH(int, queries);
    DeviceInfo waiting = DeviceRecords::usbDrive("B");
    waiting.configurationStatus = Status::NotYetDetermined;
    ScriptedPlatform::reset();
    ScriptedPlatform::attach({DeviceRecords::usbDrive("A"), waiting});

    DeviceDiscovery discovery;
    std::vector<DeviceInfo> devices;
    findSettledDevices(discovery, devices, QDeadlineTimer(milliseconds));
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), queries);
    QCOMPARE(int(devices.size()), 2);
    QVERIFY(isSettled(devices[0]));
    QVERIFY(!isSettled(devices[1]));
}

static const TestClass<tst_SettledDevices> settledDevicesTests;
#include "tst_SettledDevices.moc"
