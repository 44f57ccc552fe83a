// SPDX-License-Identifier: MIT
#include "tests/platform/ScriptedPlatform.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "update/UpdateDeviceThread.h"

#include <QPointer>
#include <QtTest>

#include <mutex>

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

/// One update, run to its end on its own thread.
class Update
{
public:
    explicit Update(const DeviceInfo &drive, const std::string &executablePath = Program)
        : worker(new UpdateDeviceThread(drive, executablePath))
    {
        std::mutex mutex;
        const auto receive = [this, &mutex](bool result) {
            const std::lock_guard<std::mutex> lock(mutex);
            results.append(result);
            sentByItself = QThread::currentThread() == worker;
            callsBefore = ScriptedPlatform::calls();
        };
        QObject::connect(worker, &UpdateDeviceThread::updateResult, worker, receive, Qt::DirectConnection);
        QElapsedTimer timer;
        timer.start();
        worker->start(QThread::InheritPriority);
        ended = worker->wait(30000);
        milliseconds = timer.elapsed();
        // The thread sanitizer does not see what QThread::wait() puts in order.
        const std::lock_guard<std::mutex> lock(mutex);
    }
    ~Update() { delete worker; }

    QPointer<UpdateDeviceThread> worker;
    bool ended = false;
    QVector<bool> results;
    QStringList callsBefore; ///< those made before the result was sent
    bool sentByItself = false;
    qint64 milliseconds = 0;
};

/// The calls for a drive behind that bridge, in order.
QStringList callsFor(
    int chipsetType, const QString &serialNumber = "SN-1", const QString &imagePath = "/opt/tarvo/pebble.tfw")
{
    const QHash<int, QString> updaters = {
        {1, "Asm1051"}, {2, "Asm1051E"}, {3, "Asm1053"}, {5, "OxSemiFireWire934"}, {6, "OxSemiFireWire944"}};
    const QString updater = updaters.value(chipsetType);
    QStringList calls = {updater + "(" + serialNumber + ")", "updateDevice(" + imagePath + ")"};
    if (chipsetType <= 3) {
        calls.append("unmountDisk(" + serialNumber + ")");
    }
    return calls + QStringList{"~" + updater + "()"};
}

void addBridges()
{
    QTest::addColumn<int>("chipsetType");
    for (const int chipsetType : {1, 2, 3, 5, 6}) {
        QTest::addRow("%d", chipsetType) << chipsetType;
    }
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
    void usbResultCombinesFlashAndUnmount_data();
    void usbResultCombinesFlashAndUnmount();
    void fireWireResultIsTheFlashResult_data();
    void fireWireResultIsTheFlashResult();
    void otherChipsetFailsWithoutAnyLibraryCall_data();
    void otherChipsetFailsWithoutAnyLibraryCall();
    void imageLiesInTheExecutablesFolder_data();
    void imageLiesInTheExecutablesFolder();
    void textsReachTheLibraryByteByByte_data();
    void textsReachTheLibraryByteByByte();
    void doesNothingBeforeItIsStarted();
    void doesNotPause();
    void isNotDeletedByItsEnd();
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
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
    QVERIFY(UpdateDeviceThread(usbDrive(), Program).parent() == nullptr);
}

void tst_UpdateDeviceThread::bridgeDecidesTheUpdaterAndTheUnmount_data()
{
    addBridges();
}

void tst_UpdateDeviceThread::bridgeDecidesTheUpdaterAndTheUnmount()
{
    QFETCH(int, chipsetType);
    const Update update(driveBehind(chipsetType));
    QVERIFY(update.ended);
    QCOMPARE(update.results, QVector<bool>{true});
    QVERIFY(update.sentByItself);
    // The drive has been released when the result is sent.
    QCOMPARE(update.callsBefore, callsFor(chipsetType));
    QCOMPARE(ScriptedPlatform::calls(), callsFor(chipsetType));
}

void tst_UpdateDeviceThread::usbResultCombinesFlashAndUnmount_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<bool>("flashed");
    QTest::addColumn<int>("unmounted");
    QTest::addColumn<bool>("result");
    for (const int chipsetType : {1, 2, 3}) {
        const auto row = [chipsetType](const char *name, bool flashed, int unmounted, bool result) {
            QTest::addRow("%d: %s", chipsetType, name) << chipsetType << flashed << unmounted << result;
        };
        row("both succeed", true, 1, true);
        row("unmount fails", true, 0, false);
        row("flash fails", false, 1, false);
        row("both fail", false, 0, false);
        row("unmount returns 2: bit 0 is clear", true, 2, false);
        row("unmount returns 3: bit 0 is set", true, 3, true);
        row("unmount returns 256: bit 0 is clear", true, 256, false);
        row("unmount returns -1: bit 0 is set", true, -1, true);
        row("unmount returns -2: bit 0 is clear", true, -2, false);
        row("flash fails, unmount returns -1", false, -1, false);
    }
}

void tst_UpdateDeviceThread::usbResultCombinesFlashAndUnmount()
{
    QFETCH(int, chipsetType);
    QFETCH(bool, flashed);
    QFETCH(int, unmounted);
    QFETCH(bool, result);
    ScriptedPlatform::setFlashResult(flashed);
    ScriptedPlatform::setUnmountResult(unmounted);
    QCOMPARE(Update(driveBehind(chipsetType)).results, QVector<bool>{result});
    // Flashed once and unmounted once, whatever comes of it.
    QCOMPARE(ScriptedPlatform::calls(), callsFor(chipsetType));
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
    ScriptedPlatform::setUnmountResult(0);
    DeviceInfo drive = fireWireDrive("SN-1");
    drive.chipsetType = chipsetType;
    QCOMPARE(Update(drive).results, QVector<bool>{flashed});
    QCOMPARE(ScriptedPlatform::calls(), callsFor(chipsetType, "SN-1", "/opt/tarvo/harbour-firewire.tfw"));
}

void tst_UpdateDeviceThread::otherChipsetFailsWithoutAnyLibraryCall_data()
{
    QTest::addColumn<int>("chipsetType");
    for (const int chipsetType : {0, 4, 7, 8, 9, -1, -2, -3, -5, -6, std::numeric_limits<int>::max(),
             std::numeric_limits<int>::min()}) {
        QTest::addRow("%d", chipsetType) << chipsetType;
    }
    // Codes that are known by their low bits alone.
    for (const int chipsetType : {1, 2, 3, 5, 6}) {
        for (const int above : {8, 16, 0x100, 0x10000, 0x1000000, std::numeric_limits<int>::min()}) {
            QTest::addRow("%d and %#x", chipsetType, uint(above)) << (chipsetType | above);
        }
    }
}

void tst_UpdateDeviceThread::otherChipsetFailsWithoutAnyLibraryCall()
{
    QFETCH(int, chipsetType);
    const Update update(driveBehind(chipsetType));
    QCOMPARE(update.results, QVector<bool>{false});
    QVERIFY(update.sentByItself);
    QVERIFY(ScriptedPlatform::calls().isEmpty());
}

void tst_UpdateDeviceThread::imageLiesInTheExecutablesFolder_data()
{
    QTest::addColumn<QString>("executablePath");
    QTest::addColumn<QString>("imagePath");
    const auto row = [](const char *name, const char *executablePath, const char *imagePath) {
        QTest::newRow(name) << executablePath << imagePath;
    };
    row("absolute", "/opt/tarvo/updater", "/opt/tarvo/pebble.tfw");
    row("in the root", "/updater", "/pebble.tfw");
    row("relative", "./updater", "./pebble.tfw");
    row("relative, deeper", "build/bin/updater", "build/bin/pebble.tfw");
    row("parent directory", "../updater", "../pebble.tfw");
    row("with blanks", "/Volumes/My Tools/updater", "/Volumes/My Tools/pebble.tfw");
    row("with a backslash", "/opt/tar\\vo/upd\\ater", "/opt/tar\\vo/pebble.tfw");
    row("doubled slash stays as it is", "/opt//updater", "/opt//pebble.tfw");
    row("doubled slash at the end", "/opt/tarvo//", "/opt/tarvo//pebble.tfw");
    row("slash at the end", "/opt/tarvo/", "/opt/tarvo/pebble.tfw");
    row("slash alone", "/", "/pebble.tfw");
    row("without a slash: the bare file name", "tarvo-firmware-updater", "pebble.tfw");
    row("empty", "", "pebble.tfw");
}

void tst_UpdateDeviceThread::imageLiesInTheExecutablesFolder()
{
    QFETCH(QString, executablePath);
    QFETCH(QString, imagePath);
    const Update update(usbDrive("SN-1"), executablePath.toStdString());
    QCOMPARE(ScriptedPlatform::calls(), callsFor(Chipset::Asm1051, "SN-1", imagePath));
}

void tst_UpdateDeviceThread::textsReachTheLibraryByteByByte_data()
{
    addBridges();
}

void tst_UpdateDeviceThread::textsReachTheLibraryByteByByte()
{
    QFETCH(int, chipsetType);
    DeviceInfo drive = driveBehind(chipsetType);
    const auto text = [](const std::string &bytes) {
        return QString::fromLatin1(bytes.data(), int(bytes.size()));
    };

    drive.serialNumber = std::string(" S\0N\xE9%1/ ", 9);
    drive.firmwareFileName = std::string(" im\0\xE4ge \xC3\xA9 %1.tfw ", 18);
    const std::string directory("/o p\xDF\0%2/", 9);
    const Update update(drive, directory + "updater");
    QCOMPARE(ScriptedPlatform::calls(),
        callsFor(chipsetType, text(drive.serialNumber), text(directory + drive.firmwareFileName)));

    // A file name is not resolved again.
    ScriptedPlatform::reset();
    drive.serialNumber = "";
    drive.firmwareFileName = "/else where/../x.tfw";
    const Update another(drive, "/opt/updater");
    QCOMPARE(ScriptedPlatform::calls(), callsFor(chipsetType, "", "/opt//else where/../x.tfw"));
}

void tst_UpdateDeviceThread::doesNothingBeforeItIsStarted()
{
    const UpdateDeviceThread worker(usbDrive(), Program);
    QVERIFY(!worker.isRunning());
    QVERIFY(ScriptedPlatform::calls().isEmpty());
}

void tst_UpdateDeviceThread::doesNotPause()
{
    // A busy machine may hold up one update, hardly each of five.
    for (const int chipsetType : {Chipset::NoUpdater, Chipset::Asm1053, Chipset::OxSemiFireWire944}) {
        qint64 fastest = std::numeric_limits<qint64>::max();
        for (int update = 0; update < 5; ++update) {
            fastest = qMin(fastest, Update(driveBehind(chipsetType)).milliseconds);
        }
        QVERIFY2(fastest < 100, qPrintable(QString::number(fastest)));
    }
}

void tst_UpdateDeviceThread::isNotDeletedByItsEnd()
{
    const Update update(usbDrive());
    QVERIFY(update.ended);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!update.worker.isNull());
}

static const TestClass<tst_UpdateDeviceThread> updateDeviceThreadTests;
#include "tst_UpdateDeviceThread.moc"
