#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

/// How long a query takes, and when the statuses that it reports are determined.
class tst_BenchDiscoveryTiming : public QObject
{
    Q_OBJECT

private slots:
    void queriesTakeTimeWithASlowProbe();
    void statusesSettleAfterQueries();
    void statusesSettleAfterTime();
    void statusesNeverSettle();
    void neverSettlingForOnceEndsWithTheRestart();
    void aClockThatWasSetBackDelaysNothing();
};

namespace {

void replug(TemporaryBench &bench)
{
    bench.lifeCycle().unplug("A");
    bench.lifeCycle().plug("A");
}

} // namespace

void tst_BenchDiscoveryTiming::queriesTakeTimeWithASlowProbe()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::SlowProbe, 150));
    bench.lifeCycle().setFault("B", numberFault(FaultKind::SlowProbe, 100, true));
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(bench.discovery().query().size(), std::size_t(2));
    QVERIFY(clock.elapsed() >= 250);
    QCOMPARE(faultNames(bench.drive("A").faults) + faultNames(bench.drive("B").faults), "slow-probe"s);
    // Neither a drive that is unplugged nor one that is only described takes time.
    bench.lifeCycle().setFault("A", numberFault(FaultKind::SlowProbe, 60000));
    bench.lifeCycle().unplug("A");
    clock.start();
    bench.discovery().query();
    bench.discovery().records({bench.drive("A")});
    QVERIFY2(clock.elapsed() < 30000, std::to_string(clock.elapsed()).c_str());
}

void tst_BenchDiscoveryTiming::statusesSettleAfterQueries()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::SettleQueries, 2));
    const auto statuses = [&] {
        std::vector<std::int32_t> seen;
        for (int i = 0; i < 4; ++i) {
            const DeviceInfo record = bench.firstOfQuery();
            seen.push_back(record.firmwareStatus);
            seen.push_back(record.configurationStatus);
        }
        return seen;
    };
    const std::vector<std::int32_t> expected{0, 0, 0, 0, 1, 1, 1, 1};
    QCOMPARE(statuses(), expected);
    replug(bench);
    QCOMPARE(statuses(), expected);
    // For once, it is used up as soon as the statuses are determined.
    bench.lifeCycle().setFault("A", numberFault(FaultKind::SettleQueries, 2, true));
    replug(bench);
    QCOMPARE(statuses(), expected);
    QVERIFY(bench.drive("A").faults.empty());
}

void tst_BenchDiscoveryTiming::statusesSettleAfterTime()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::SettleTime, 200, true));
    replug(bench);
    QCOMPARE(bench.firstOfQuery().firmwareStatus, Status::NotYetDetermined);
    QCOMPARE(faultNames(bench.drive("A").faults), "settle-time"s);
    QTRY_COMPARE(bench.firstOfQuery().firmwareStatus, Status::UpdateRequired);
    QVERIFY(now() - bench.drive("A").pluggedAt >= 200);
    QVERIFY(bench.drive("A").faults.empty());
}

void tst_BenchDiscoveryTiming::statusesNeverSettle()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::NeverSettles));
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(bench.firstOfQuery().firmwareStatus, Status::NotYetDetermined);
    }
    replug(bench);
    QCOMPARE(bench.firstOfQuery().configurationStatus, Status::NotYetDetermined);
    bench.lifeCycle().clearFault("A", FaultKind::NeverSettles);
    QCOMPARE(bench.firstOfQuery().firmwareStatus, Status::UpdateRequired);
}

void tst_BenchDiscoveryTiming::neverSettlingForOnceEndsWithTheRestart()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.lifeCycle().setFault("A", numberFault(FaultKind::NeverSettles, 0, true));
    QCOMPARE(bench.firstOfQuery().firmwareStatus, Status::NotYetDetermined);
    replug(bench);
    QCOMPARE(bench.firstOfQuery().firmwareStatus, Status::UpdateRequired);
    QVERIFY(bench.drive("A").faults.empty());
}

void tst_BenchDiscoveryTiming::aClockThatWasSetBackDelaysNothing()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.store().database().exec("UPDATE drives SET pluggedAt = pluggedAt + 3600000");
    QCOMPARE(bench.firstOfQuery().firmwareStatus, Status::UpdateRequired);
}

static const TestClass<tst_BenchDiscoveryTiming> benchDiscoveryTimingTests;

#include "tst_BenchDiscoveryTiming.moc"
