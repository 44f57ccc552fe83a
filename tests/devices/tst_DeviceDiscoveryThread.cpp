// SPDX-License-Identifier: MIT
#include "tests/devices/Discovery.h"
#include "tests/devices/Pauses.h"
#include "tests/support/DeviceRecords.h"

#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

DeviceInfo unsettled(DeviceInfo drive, std::int32_t firmwareStatus, std::int32_t configurationStatus)
{
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    return drive;
}

using Microseconds = QVector<qulonglong>;
constexpr qulonglong Settling = 500000;
constexpr qulonglong BetweenPasses = 2000000;

/// A thread whose pauses the test ends, stopped and waited for at the test's end.
class SteppedDiscovery : public Discovery
{
public:
    ~SteppedDiscovery()
    {
        stop();
        Pauses::endAll();
        if (!thread.wait(30000)) {
            qFatal("the discovery thread does not end");
        }
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
    void everyPassSendsItsListAndTwoSecondsLieBetween_data();
    void everyPassSendsItsListAndTwoSecondsLieBetween();
    void eachPassHasAnObjectOfItsOwn();
    void listIsSentFromThisThreadWhileThePassLasts();
    void unknownStatusIsAskedForAgainEveryHalfSecond_data();
    void unknownStatusIsAskedForAgainEveryHalfSecond();
    void anyStatusButZeroIsSentAtOnce();
    void listThatChangesWhileSettlingIsSentAsItIsLast_data();
    void listThatChangesWhileSettlingIsSentAsItIsLast();
    void settlingHasNoEnd();
    void settlingIgnoresBothFlags();
    void disabledThreadOnlyPauses();
    void passUnderWayWhenDisabledStillSends();
    void stopBeforeTheLoopMakesNoLibraryCall();
    void stopDuringAPassIsSeenAfterThePause();
    void stopDuringThePauseStartsNoOtherPass();
};

void tst_DeviceDiscoveryThread::initTestCase()
{
    qRegisterMetaType<QVector<DeviceInfo>>("QVector<DeviceInfo>");
}

void tst_DeviceDiscoveryThread::init()
{
    ScriptedPlatform::reset();
    Pauses::reset();
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

void tst_DeviceDiscoveryThread::everyPassSendsItsListAndTwoSecondsLieBetween_data()
{
    QTest::addColumn<QVector<DeviceInfo>>("drives");
    QTest::newRow("no drive") << QVector<DeviceInfo>();
    QTest::newRow("in the library's order")
        << QVector<DeviceInfo>{usbDrive("C"), usbDrive("A"), usbDrive("B"), usbDrive("A")};
}

void tst_DeviceDiscoveryThread::everyPassSendsItsListAndTwoSecondsLieBetween()
{
    QFETCH(QVector<DeviceInfo>, drives);
    ScriptedPlatform::attach({drives.begin(), drives.end()});
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    Microseconds pauses;
    for (int pass = 1; pass <= 3; ++pass) {
        pauses.append(BetweenPasses);
        QTRY_COMPARE(Pauses::begun(), pauses);
        QTRY_COMPARE(int(discovery.lists.size()), pass);
        QVERIFY(discovery.lists.last() == drives);
        Pauses::end();
    }
}

void tst_DeviceDiscoveryThread::eachPassHasAnObjectOfItsOwn()
{
    ScriptedPlatform::attach({usbDrive()});
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    Pauses::end();
    QTRY_COMPARE(Pauses::begun(), (Microseconds{BetweenPasses, BetweenPasses}));
    const QStringList pass = {"DeviceDiscovery()", "getTarvoDevice(0)", "~DeviceDiscovery()"};
    QCOMPARE(ScriptedPlatform::calls(), pass + pass);
}

void tst_DeviceDiscoveryThread::listIsSentFromThisThreadWhileThePassLasts()
{
    SteppedDiscovery discovery;
    QThread *sender = nullptr;
    QStringList before;
    QObject::connect(
        &discovery.thread, &DeviceDiscoveryThread::updateDeviceList, &discovery.thread,
        [&sender, &before] {
            sender = QThread::currentThread();
            before = ScriptedPlatform::calls();
        },
        Qt::DirectConnection);
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(Pauses::begun(), Microseconds{BetweenPasses});
    QCOMPARE(sender, static_cast<QThread *>(&discovery.thread));
    QCOMPARE(before, (QStringList{"DeviceDiscovery()", "getTarvoDevice(0)"}));
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
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    // The same object is asked, with the vector as the last answer left it.
    QStringList calls = {"DeviceDiscovery()", "getTarvoDevice(0)"};
    Microseconds pauses;
    for (int answer = 1; answer <= 2; ++answer) {
        pauses.append(Settling);
        QTRY_COMPARE(Pauses::begun(), pauses);
        QCOMPARE(ScriptedPlatform::calls(), calls);
        Pauses::end();
        calls.append("getTarvoDevice(1)");
    }
    QTRY_COMPARE(Pauses::begun(), pauses + Microseconds{BetweenPasses});
    QCOMPARE(ScriptedPlatform::calls(), calls + QStringList{"~DeviceDiscovery()"});
    QTRY_COMPARE(int(discovery.lists.size()), 1);
    QVERIFY(discovery.lists[0] == QVector<DeviceInfo>{usbDrive()});
}

void tst_DeviceDiscoveryThread::anyStatusButZeroIsSentAtOnce()
{
    QVector<DeviceInfo> drives;
    for (const int status : {1, 2, 3, -1, -7, 99, 0x100, 0x10000, std::numeric_limits<int>::min()}) {
        drives.append(unsettled(usbDrive(), status, 1));
        drives.append(unsettled(usbDrive(), 1, status));
    }
    ScriptedPlatform::attach({drives.begin(), drives.end()});
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(Pauses::begun(), Microseconds{BetweenPasses});
    QTRY_COMPARE(int(discovery.lists.size()), 1);
    QVERIFY(discovery.lists[0] == drives);
}

void tst_DeviceDiscoveryThread::listThatChangesWhileSettlingIsSentAsItIsLast_data()
{
    QTest::addColumn<QVector<QVector<DeviceInfo>>>("answers");
    const DeviceInfo a = usbDrive("A");
    const DeviceInfo b = usbDrive("B");
    const DeviceInfo c = usbDrive("C");
    const DeviceInfo unknownA = unsettled(a, 0, 1);
    const DeviceInfo unknownB = unsettled(b, 0, 0);
    using Answers = QVector<QVector<DeviceInfo>>;
    QTest::newRow("last drive settles") << Answers{{a, unknownB}, {a, b}};
    QTest::newRow("first drive settles") << Answers{{unknownA, b}, {a, b}};
    QTest::newRow("first drive is unknown again") << Answers{{a, unknownB}, {unknownA, b}, {a, b}};
    QTest::newRow("drive in the middle") << Answers{{a, unknownB, c}, {a, b, c}};
    QTest::newRow("unknown drive goes away") << Answers{{a, unknownB}, {a}};
    QTest::newRow("all drives go away") << Answers{{unknownA}, {}};
    QTest::newRow("known drive goes away") << Answers{{a, unknownB}, {unknownB}, {b}};
    QTest::newRow("unknown drive comes") << Answers{{unknownA}, {a, unknownB}, {a, b}};
    QTest::newRow("unknown drive comes in front") << Answers{{a, unknownB}, {unknownA, a, b}, {c, a, b}};
}

void tst_DeviceDiscoveryThread::listThatChangesWhileSettlingIsSentAsItIsLast()
{
    QFETCH(QVector<QVector<DeviceInfo>>, answers);
    std::vector<ScriptedPlatform::DeviceList> script;
    for (const QVector<DeviceInfo> &answer : answers) {
        script.emplace_back(answer.begin(), answer.end());
    }
    ScriptedPlatform::attachInTurn(script);
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    Pauses::end(int(answers.size()) - 1);
    const Microseconds pauses(answers.size() - 1, Settling);
    QTRY_COMPARE(Pauses::begun(), pauses + Microseconds{BetweenPasses});
    QTRY_COMPARE(int(discovery.lists.size()), 1);
    QVERIFY(discovery.lists[0] == answers.last());
}

void tst_DeviceDiscoveryThread::settlingHasNoEnd()
{
    ScriptedPlatform::attach({unsettled(usbDrive(), 1, 0)});
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    Pauses::end(10000);
    QTRY_COMPARE_WITH_TIMEOUT(int(Pauses::begun().size()), 10001, 30000);
    QVERIFY(Pauses::begun() == Microseconds(10001, Settling));
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), 10001);
    QCoreApplication::processEvents();
    QVERIFY(discovery.lists.isEmpty());
}

void tst_DeviceDiscoveryThread::settlingIgnoresBothFlags()
{
    ScriptedPlatform::attach({unsettled(usbDrive(), 0, 0)});
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(Pauses::begun(), Microseconds{Settling});
    discovery.thread.discoveryEnabled = false;
    discovery.thread.stopRequested = true;
    Pauses::end();
    QTRY_COMPARE(Pauses::begun(), Microseconds(2, Settling));
    QCoreApplication::processEvents();
    QVERIFY(discovery.lists.isEmpty());

    ScriptedPlatform::attach({usbDrive()});
    Pauses::end();
    QTRY_COMPARE(Pauses::begun(), (Microseconds{Settling, Settling, BetweenPasses}));
    QTRY_COMPARE(int(discovery.lists.size()), 1);
    QVERIFY(discovery.thread.isRunning());
    Pauses::end();
    QVERIFY(discovery.thread.wait(5000));
}

void tst_DeviceDiscoveryThread::disabledThreadOnlyPauses()
{
    SteppedDiscovery discovery;
    discovery.thread.discoveryEnabled = false;
    discovery.thread.start(QThread::InheritPriority);
    Pauses::end(2);
    QTRY_COMPARE(Pauses::begun(), Microseconds(3, BetweenPasses));
    QVERIFY(ScriptedPlatform::calls().isEmpty());

    // Seen after the pause in which the flag was set, not before.
    discovery.thread.discoveryEnabled = true;
    Pauses::end();
    QTRY_COMPARE(Pauses::begun(), Microseconds(4, BetweenPasses));
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
    QTRY_COMPARE(int(discovery.lists.size()), 1);

    discovery.thread.discoveryEnabled = false;
    Pauses::end();
    QTRY_COMPARE(Pauses::begun(), Microseconds(5, BetweenPasses));
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
}

void tst_DeviceDiscoveryThread::passUnderWayWhenDisabledStillSends()
{
    ScriptedPlatform::attach({usbDrive()});
    ScriptedPlatform::holdQueries();
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
    discovery.thread.discoveryEnabled = false;
    ScriptedPlatform::releaseQueries();
    QTRY_COMPARE(int(discovery.lists.size()), 1);
}

void tst_DeviceDiscoveryThread::stopBeforeTheLoopMakesNoLibraryCall()
{
    SteppedDiscovery discovery;
    discovery.thread.stopRequested = true;
    discovery.thread.start(QThread::InheritPriority);
    QVERIFY(discovery.thread.wait(5000));
    QVERIFY(ScriptedPlatform::calls().isEmpty());
    QVERIFY(Pauses::begun().isEmpty());
}

void tst_DeviceDiscoveryThread::stopDuringAPassIsSeenAfterThePause()
{
    ScriptedPlatform::holdQueries();
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
    discovery.thread.stopRequested = true;
    ScriptedPlatform::releaseQueries();
    QTRY_COMPARE(Pauses::begun(), Microseconds{BetweenPasses});
    QTRY_COMPARE(int(discovery.lists.size()), 1);
    Pauses::end();
    QVERIFY(discovery.thread.wait(5000));
    QCOMPARE(ScriptedPlatform::count("DeviceDiscovery()"), 1);
}

void tst_DeviceDiscoveryThread::stopDuringThePauseStartsNoOtherPass()
{
    SteppedDiscovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE(Pauses::begun(), Microseconds{BetweenPasses});
    discovery.thread.stopRequested = true;
    Pauses::end();
    QVERIFY(discovery.thread.wait(5000));
    QCOMPARE(Pauses::begun(), Microseconds{BetweenPasses});
    QCOMPARE(ScriptedPlatform::count("DeviceDiscovery()"), 1);
}

QTEST_GUILESS_MAIN(tst_DeviceDiscoveryThread)
#include "tst_DeviceDiscoveryThread.moc"
