#include "devices/DeviceDiscoveryThread.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/support/DeviceRecords.h"

#include <QtTest>

#include <memory>

using DeviceRecords::usbDrive;

namespace {

DeviceInfo unsettled(DeviceInfo drive, std::int32_t firmwareStatus, std::int32_t configurationStatus)
{
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    return drive;
}

/// A thread whose lists are received on the test's thread, stopped and waited for at the end. The object
/// is kept, as it is in the program.
class Discovery
{
public:
    Discovery() : thread(keptThread())
    {
        QObject::connect(&thread, &DeviceDiscoveryThread::updateDeviceList, &receiver,
            [this](const QVector<DeviceInfo> &list) { lists.append(list); });
    }
    ~Discovery()
    {
        ScriptedPlatform::attach({});
        ScriptedPlatform::releaseQueries();
        thread.stopRequested = true;
        thread.wait();
    }

    DeviceDiscoveryThread &thread;
    QObject receiver;
    QList<QVector<DeviceInfo>> lists;

private:
    static DeviceDiscoveryThread &keptThread()
    {
        static auto &threads = *new QList<DeviceDiscoveryThread *>;
        threads.append(new DeviceDiscoveryThread);
        return *threads.last();
    }
};

} // namespace

class tst_DeviceDiscoveryThread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void hasOneSignalAndNoSlots();
    void startsEnabledAndNotStopped();
    void noDriveAttachedStillSendsAnEmptyListEveryPass();
    void listArrivesInTheLibrarysOrderAboutEveryTwoSeconds();
    void eachPassHasAnObjectOfItsOwn();
    void unknownStatusIsAskedForAgainEveryHalfSecond_data();
    void unknownStatusIsAskedForAgainEveryHalfSecond();
    void anyStatusButZeroIsSentAtOnce();
    void settlingStartsOverAtTheFirstDrive();
    void driveThatDisappearsWhileSettlingDropsOut();
    void settlingIgnoresBothFlags();
    void disabledThreadNeitherAsksNorSends();
    void passUnderWayWhenDisabledStillSends();
    void stopBeforeTheLoopMakesNoLibraryCall();
    void stopDuringThePauseStartsNoOtherPass();
};

void tst_DeviceDiscoveryThread::initTestCase()
{
    qRegisterMetaType<QVector<DeviceInfo>>("QVector<DeviceInfo>");
}

void tst_DeviceDiscoveryThread::init()
{
    ScriptedPlatform::reset();
}

void tst_DeviceDiscoveryThread::hasOneSignalAndNoSlots()
{
    const QMetaObject &meta = DeviceDiscoveryThread::staticMetaObject;
    QCOMPARE(meta.className(), "DeviceDiscoveryThread");
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod method = meta.method(meta.methodOffset());
    QCOMPARE(method.methodType(), QMetaMethod::Signal);
    QCOMPARE(
        method.methodSignature(), QMetaObject::normalizedSignature("updateDeviceList(QVector<DeviceInfo>)"));
    QCOMPARE(method.parameterNames(), QList<QByteArray>{"deviceList"});
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
}

void tst_DeviceDiscoveryThread::startsEnabledAndNotStopped()
{
    const DeviceDiscoveryThread thread;
    QVERIFY(thread.discoveryEnabled);
    QVERIFY(!thread.stopRequested);
    QVERIFY(thread.parent() == nullptr);
}

void tst_DeviceDiscoveryThread::noDriveAttachedStillSendsAnEmptyListEveryPass()
{
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_VERIFY(discovery.lists.size() >= 2);
    QVERIFY(discovery.lists[0].isEmpty());
    QVERIFY(discovery.lists[1].isEmpty());
}

void tst_DeviceDiscoveryThread::listArrivesInTheLibrarysOrderAboutEveryTwoSeconds()
{
    const ScriptedPlatform::DeviceList drives = {usbDrive("C"), usbDrive("A"), usbDrive("B")};
    ScriptedPlatform::attach(drives);
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_VERIFY(discovery.lists.size() >= 2);
    const QVector<DeviceInfo> expected(drives.begin(), drives.end());
    QVERIFY(discovery.lists[0] == expected);
    QVERIFY(discovery.lists[1] == expected);
    const qint64 interval = ScriptedPlatform::queryIntervals().first();
    QVERIFY2(interval >= 2000 && interval < 4000, qPrintable(QString::number(interval)));
}

void tst_DeviceDiscoveryThread::eachPassHasAnObjectOfItsOwn()
{
    ScriptedPlatform::attach({usbDrive()});
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_VERIFY(discovery.lists.size() >= 2);
    const QStringList pass = {"DeviceDiscovery()", "getTarvoDevice(0)", "~DeviceDiscovery()"};
    QTRY_VERIFY(ScriptedPlatform::calls().size() >= 6);
    QCOMPARE(ScriptedPlatform::calls().mid(0, 6), pass + pass);
}

void tst_DeviceDiscoveryThread::unknownStatusIsAskedForAgainEveryHalfSecond_data()
{
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    QTest::newRow("firmware not yet determined") << 0 << 1;
    QTest::newRow("configuration not yet determined") << 2 << 0;
    QTest::newRow("neither determined") << 0 << 0;
}

void tst_DeviceDiscoveryThread::unknownStatusIsAskedForAgainEveryHalfSecond()
{
    QFETCH(int, firmwareStatus);
    QFETCH(int, configurationStatus);
    const DeviceInfo waiting = unsettled(usbDrive(), firmwareStatus, configurationStatus);
    ScriptedPlatform::attachInTurn({{waiting}, {waiting}, {usbDrive()}});
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(discovery.lists.size(), 1);
    QVERIFY(discovery.lists[0] == QVector<DeviceInfo>{usbDrive()});
    // The same object is asked, with the vector as the last answer left it.
    QTRY_COMPARE(ScriptedPlatform::calls(),
        (QStringList{"DeviceDiscovery()", "getTarvoDevice(0)", "getTarvoDevice(1)", "getTarvoDevice(1)",
            "~DeviceDiscovery()"}));
    for (const qint64 interval : ScriptedPlatform::queryIntervals()) {
        QVERIFY2(interval >= 500 && interval < 2000, qPrintable(QString::number(interval)));
    }
}

void tst_DeviceDiscoveryThread::anyStatusButZeroIsSentAtOnce()
{
    const ScriptedPlatform::DeviceList drives = {
        unsettled(usbDrive("A"), 3, -1), unsettled(usbDrive("B"), -7, 99)};
    ScriptedPlatform::attach(drives);
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(discovery.lists.size(), 1);
    QVERIFY(discovery.lists[0] == QVector<DeviceInfo>(drives.begin(), drives.end()));
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
}

void tst_DeviceDiscoveryThread::settlingStartsOverAtTheFirstDrive()
{
    // The second drive settles in the second answer, in which the first one is unknown again.
    ScriptedPlatform::attachInTurn({{usbDrive("A"), unsettled(usbDrive("B"), 0, 0)},
        {unsettled(usbDrive("A"), 0, 1), usbDrive("B")}, {usbDrive("A"), usbDrive("B")}});
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(discovery.lists.size(), 1);
    QVERIFY(discovery.lists[0] == (QVector<DeviceInfo>{usbDrive("A"), usbDrive("B")}));
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), 3);
}

void tst_DeviceDiscoveryThread::driveThatDisappearsWhileSettlingDropsOut()
{
    ScriptedPlatform::attachInTurn({{usbDrive("A"), unsettled(usbDrive("B"), 0, 0)}, {usbDrive("A")}});
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(discovery.lists.size(), 1);
    QVERIFY(discovery.lists[0] == QVector<DeviceInfo>{usbDrive("A")});
}

void tst_DeviceDiscoveryThread::settlingIgnoresBothFlags()
{
    ScriptedPlatform::attach({unsettled(usbDrive(), 0, 0)});
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_VERIFY(ScriptedPlatform::count("getTarvoDevice") >= 1);
    discovery.thread.discoveryEnabled = false;
    discovery.thread.stopRequested = true;
    QTRY_VERIFY(ScriptedPlatform::count("getTarvoDevice") >= 4);
    QVERIFY(discovery.thread.isRunning());
    QVERIFY(discovery.lists.isEmpty());
    ScriptedPlatform::attach({usbDrive()});
    QTRY_COMPARE(discovery.lists.size(), 1);
    QTRY_VERIFY(discovery.thread.isFinished());
}

void tst_DeviceDiscoveryThread::disabledThreadNeitherAsksNorSends()
{
    ScriptedPlatform::attach({usbDrive()});
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(discovery.lists.size(), 1);
    discovery.thread.discoveryEnabled = false;
    // Longer than the pause: a turn has begun in which the flag was seen.
    QElapsedTimer turn;
    turn.start();
    QTRY_VERIFY(turn.elapsed() > 3000);
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
    QCOMPARE(int(discovery.lists.size()), 1);
    discovery.thread.discoveryEnabled = true;
    QTRY_VERIFY(discovery.lists.size() >= 2);
}

void tst_DeviceDiscoveryThread::passUnderWayWhenDisabledStillSends()
{
    ScriptedPlatform::attach({usbDrive()});
    ScriptedPlatform::holdQueries();
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
    discovery.thread.discoveryEnabled = false;
    ScriptedPlatform::releaseQueries();
    QTRY_COMPARE(discovery.lists.size(), 1);
}

void tst_DeviceDiscoveryThread::stopBeforeTheLoopMakesNoLibraryCall()
{
    Discovery discovery;
    discovery.thread.stopRequested = true;
    QElapsedTimer timer;
    timer.start();
    discovery.thread.start(QThread::InheritPriority);
    QVERIFY(discovery.thread.wait(5000));
    QVERIFY(timer.elapsed() < 2000);
    QVERIFY(ScriptedPlatform::calls().isEmpty());
}

void tst_DeviceDiscoveryThread::stopDuringThePauseStartsNoOtherPass()
{
    Discovery discovery;
    QElapsedTimer timer;
    timer.start();
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(discovery.lists.size(), 1);
    discovery.thread.stopRequested = true;
    QVERIFY(discovery.thread.wait(5000));
    QVERIFY(timer.elapsed() >= 2000);
    QCOMPARE(ScriptedPlatform::count("DeviceDiscovery()"), 1);
}

QTEST_GUILESS_MAIN(tst_DeviceDiscoveryThread)
#include "tst_DeviceDiscoveryThread.moc"
