#include "tests/platform/ScriptedPlatform.h"
#include "tests/support/DeviceRecords.h"
#include "update/UpdateDeviceThread.h"

#include <QtTest>

#include <future>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

constexpr const char *Program = "/opt/tarvo/tarvo-firmware-updater";

DeviceInfo driveBehind(std::int32_t chipsetType)
{
    DeviceInfo drive = usbDrive("SN-1");
    drive.chipsetType = chipsetType;
    return drive;
}

/// Runs an update to its end on its own thread and returns the result that it sent.
bool run(const DeviceInfo &drive, const std::string &executablePath = Program)
{
    UpdateDeviceThread worker(drive, executablePath);
    // A promise can be kept once: a second result would end the test.
    std::promise<bool> sent;
    QObject::connect(
        &worker, &UpdateDeviceThread::updateResult, [&sent](bool result) { sent.set_value(result); });
    worker.start(QThread::InheritPriority);
    const bool result = sent.get_future().get();
    worker.wait();
    return result;
}

} // namespace

class tst_UpdateDeviceThread : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void hasOneSignalAndNoSlots();
    void bridgeDecidesTheUpdaterAndTheUnmount_data();
    void bridgeDecidesTheUpdaterAndTheUnmount();
    void resultCombinesFlashAndUnmount_data();
    void resultCombinesFlashAndUnmount();
    void fireWireResultIsTheFlashResult_data();
    void fireWireResultIsTheFlashResult();
    void chipsetZeroOrFourFailsWithoutAnyLibraryCall_data();
    void chipsetZeroOrFourFailsWithoutAnyLibraryCall();
    void chipsetSevenOrMinusOneFailsWithoutAnyLibraryCall_data();
    void chipsetSevenOrMinusOneFailsWithoutAnyLibraryCall();
    void imageLiesInTheExecutablesFolder_data();
    void imageLiesInTheExecutablesFolder();
    void executablePathWithoutSlashGivesTheBareFileName();
    void resultIsSentFromTheWorkersOwnThread();
    void usbDriveWhoseFlashFailsIsStillUnmounted();
    void fireWireDriveIsNeverUnmounted_data();
    void fireWireDriveIsNeverUnmounted();
    void textsReachTheLibraryWhole();
};

void tst_UpdateDeviceThread::init()
{
    ScriptedPlatform::reset();
}

void tst_UpdateDeviceThread::hasOneSignalAndNoSlots()
{
    const QMetaObject &meta = UpdateDeviceThread::staticMetaObject;
    QCOMPARE(meta.className(), "UpdateDeviceThread");
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod method = meta.method(meta.methodOffset());
    QCOMPARE(method.methodType(), QMetaMethod::Signal);
    QCOMPARE(method.methodSignature(), QByteArray("updateResult(bool)"));
    QCOMPARE(method.parameterNames(), QList<QByteArray>{"result"});
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QVERIFY(UpdateDeviceThread(usbDrive(), Program).parent() == nullptr);
}

void tst_UpdateDeviceThread::bridgeDecidesTheUpdaterAndTheUnmount_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<QStringList>("calls");
    const QString flash = "updateDevice(/opt/tarvo/pebble.tfw)";
    const QString unmount = "unmountDisk(SN-1)";
    QTest::newRow("1") << 1 << QStringList{"Asm1051(SN-1)", flash, unmount, "~Asm1051()"};
    QTest::newRow("2") << 2 << QStringList{"Asm1051E(SN-1)", flash, unmount, "~Asm1051E()"};
    QTest::newRow("3") << 3 << QStringList{"Asm1053(SN-1)", flash, unmount, "~Asm1053()"};
    QTest::newRow("5") << 5 << QStringList{"OxSemiFireWire934(SN-1)", flash, "~OxSemiFireWire934()"};
    QTest::newRow("6") << 6 << QStringList{"OxSemiFireWire944(SN-1)", flash, "~OxSemiFireWire944()"};
}

void tst_UpdateDeviceThread::bridgeDecidesTheUpdaterAndTheUnmount()
{
    QFETCH(int, chipsetType);
    QFETCH(QStringList, calls);
    QCOMPARE(run(driveBehind(chipsetType)), true);
    QCOMPARE(ScriptedPlatform::calls(), calls);
}

void tst_UpdateDeviceThread::resultCombinesFlashAndUnmount_data()
{
    QTest::addColumn<bool>("flashed");
    QTest::addColumn<int>("unmounted");
    QTest::addColumn<bool>("result");
    QTest::newRow("both succeed") << true << 1 << true;
    QTest::newRow("unmount fails") << true << 0 << false;
    QTest::newRow("flash fails") << false << 1 << false;
    QTest::newRow("both fail") << false << 0 << false;
    QTest::newRow("unmount returns 2: bit 0 is clear") << true << 2 << false;
    QTest::newRow("unmount returns 3: bit 0 is set") << true << 3 << true;
    QTest::newRow("unmount returns -1: bit 0 is set") << true << -1 << true;
    QTest::newRow("flash fails, unmount returns -1") << false << -1 << false;
}

void tst_UpdateDeviceThread::resultCombinesFlashAndUnmount()
{
    QFETCH(bool, flashed);
    QFETCH(int, unmounted);
    QFETCH(bool, result);
    ScriptedPlatform::setFlashResult(flashed);
    ScriptedPlatform::setUnmountResult(unmounted);
    for (const std::int32_t chipsetType : {1, 2, 3}) {
        QCOMPARE(run(driveBehind(chipsetType)), result);
    }
}

void tst_UpdateDeviceThread::fireWireResultIsTheFlashResult_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<bool>("flashed");
    QTest::newRow("934 succeeds") << 5 << true;
    QTest::newRow("934 fails") << 5 << false;
    QTest::newRow("944 succeeds") << 6 << true;
    QTest::newRow("944 fails") << 6 << false;
}

void tst_UpdateDeviceThread::fireWireResultIsTheFlashResult()
{
    QFETCH(int, chipsetType);
    QFETCH(bool, flashed);
    ScriptedPlatform::setFlashResult(flashed);
    QCOMPARE(run(driveBehind(chipsetType)), flashed);
}

void tst_UpdateDeviceThread::chipsetZeroOrFourFailsWithoutAnyLibraryCall_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::newRow("0") << 0;
    QTest::newRow("4") << 4;
}

void tst_UpdateDeviceThread::chipsetZeroOrFourFailsWithoutAnyLibraryCall()
{
    QFETCH(int, chipsetType);
    QCOMPARE(run(driveBehind(chipsetType)), false);
    QVERIFY(ScriptedPlatform::calls().isEmpty());
}

void tst_UpdateDeviceThread::chipsetSevenOrMinusOneFailsWithoutAnyLibraryCall_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::newRow("7") << 7;
    QTest::newRow("-1") << -1;
    QTest::newRow("largest") << std::numeric_limits<int>::max();
    QTest::newRow("smallest") << std::numeric_limits<int>::min();
}

void tst_UpdateDeviceThread::chipsetSevenOrMinusOneFailsWithoutAnyLibraryCall()
{
    chipsetZeroOrFourFailsWithoutAnyLibraryCall();
}

void tst_UpdateDeviceThread::imageLiesInTheExecutablesFolder_data()
{
    QTest::addColumn<QString>("executablePath");
    QTest::addColumn<QString>("imagePath");
    QTest::newRow("absolute") << "/opt/tarvo/updater"
                              << "/opt/tarvo/pebble.tfw";
    QTest::newRow("in the root") << "/updater"
                                 << "/pebble.tfw";
    QTest::newRow("relative") << "./updater"
                              << "./pebble.tfw";
    QTest::newRow("relative, deeper") << "build/bin/updater"
                                      << "build/bin/pebble.tfw";
    QTest::newRow("with blanks") << "/Volumes/My Tools/updater"
                                 << "/Volumes/My Tools/pebble.tfw";
    QTest::newRow("doubled slash stays as it is") << "/opt//updater"
                                                  << "/opt//pebble.tfw";
    QTest::newRow("slash at the end") << "/opt/tarvo/"
                                      << "/opt/tarvo/pebble.tfw";
    QTest::newRow("empty") << ""
                           << "pebble.tfw";
}

void tst_UpdateDeviceThread::imageLiesInTheExecutablesFolder()
{
    QFETCH(QString, executablePath);
    QFETCH(QString, imagePath);
    run(usbDrive(), executablePath.toStdString());
    QCOMPARE(ScriptedPlatform::calls().at(1), "updateDevice(" + imagePath + ")");
}

void tst_UpdateDeviceThread::executablePathWithoutSlashGivesTheBareFileName()
{
    run(usbDrive(), "tarvo-firmware-updater");
    QCOMPARE(ScriptedPlatform::calls().at(1), QString("updateDevice(pebble.tfw)"));
}

void tst_UpdateDeviceThread::resultIsSentFromTheWorkersOwnThread()
{
    UpdateDeviceThread worker(driveBehind(Chipset::Asm1051), Program);
    std::promise<QThread *> sender;
    QObject::connect(&worker, &UpdateDeviceThread::updateResult,
        [&sender] { sender.set_value(QThread::currentThread()); });
    worker.start(QThread::InheritPriority);
    QThread *const found = sender.get_future().get();
    worker.wait();
    QCOMPARE(found, static_cast<QThread *>(&worker));
}

void tst_UpdateDeviceThread::usbDriveWhoseFlashFailsIsStillUnmounted()
{
    ScriptedPlatform::setFlashResult(false);
    QCOMPARE(run(usbDrive("SN-1")), false);
    const QStringList calls = ScriptedPlatform::calls();
    QVERIFY(calls.indexOf("unmountDisk(SN-1)") > calls.indexOf("updateDevice(/opt/tarvo/pebble.tfw)"));
    QVERIFY(calls.indexOf("unmountDisk(SN-1)") < calls.indexOf("~Asm1051()"));
}

void tst_UpdateDeviceThread::fireWireDriveIsNeverUnmounted_data()
{
    fireWireResultIsTheFlashResult_data();
}

void tst_UpdateDeviceThread::fireWireDriveIsNeverUnmounted()
{
    QFETCH(int, chipsetType);
    QFETCH(bool, flashed);
    ScriptedPlatform::setFlashResult(flashed);
    DeviceInfo drive = fireWireDrive();
    drive.chipsetType = chipsetType;
    run(drive);
    QCOMPARE(ScriptedPlatform::count("updateDevice"), 1);
    QCOMPARE(ScriptedPlatform::count("unmountDisk"), 0);
}

void tst_UpdateDeviceThread::textsReachTheLibraryWhole()
{
    DeviceInfo drive = usbDrive(std::string("S\0N\xE9", 4));
    drive.firmwareFileName = "im\xE4ge.tfw";
    run(drive, "/op\xDF/updater");
    QCOMPARE(ScriptedPlatform::calls().at(0), "Asm1051(" + QString::fromLatin1("S\0N\xE9", 4) + ")");
    QCOMPARE(ScriptedPlatform::calls().at(1), QString::fromLatin1("updateDevice(/op\xDF/im\xE4ge.tfw)"));
}

QTEST_GUILESS_MAIN(tst_UpdateDeviceThread)
#include "tst_UpdateDeviceThread.moc"
