// SPDX-License-Identifier: MIT
#include "tests/devices/Discovery.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

#include <algorithm>

using DeviceRecords::usbDrive;

namespace {

/// A busy machine makes a pause longer, never shorter, and hardly makes every one of several much longer.
void compareFastest(const QList<qint64> &intervals, qint64 expected)
{
    const qint64 fastest = *std::min_element(intervals.begin(), intervals.end());
    QVERIFY2(fastest >= expected && fastest < expected * 6 / 5, qPrintable(QString::number(fastest)));
}

} // namespace

class tst_DiscoveryTiming : public QObject
{
    Q_OBJECT

private slots:
    void halfASecondWhileSettlingAndTwoSecondsBetweenPasses();
};

void tst_DiscoveryTiming::halfASecondWhileSettlingAndTwoSecondsBetweenPasses()
{
    qRegisterMetaType<QVector<DeviceInfo>>("QVector<DeviceInfo>");
    DeviceInfo waiting = usbDrive();
    waiting.firmwareStatus = Status::NotYetDetermined;
    ScriptedPlatform::attachInTurn({{waiting}, {waiting}, {waiting}, {waiting}, {usbDrive()}});
    Discovery discovery;
    discovery.thread.start(QThread::InheritPriority);
    QTRY_COMPARE_WITH_TIMEOUT(ScriptedPlatform::queryIntervals().size(), 6, 60000);
    const QList<qint64> intervals = ScriptedPlatform::queryIntervals();
    compareFastest(intervals.mid(0, 4), 500);
    compareFastest(intervals.mid(4), 2000);
    discovery.stop();
    QVERIFY(discovery.thread.wait(30000));
}

static const TestClass<tst_DiscoveryTiming> discoveryTimingTests;
#include "tst_DiscoveryTiming.moc"
