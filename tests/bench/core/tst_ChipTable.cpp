#include "bench/core/DriveTable.h"
#include "bench/core/SampleBench.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <atomic>
#include <thread>

using namespace bench;

/// The rows of the flash chips.
class tst_ChipTable : public QObject
{
    Q_OBJECT

private slots:
    void aDriveIsNeverVisibleBeforeItsChip();
    void aDriveWithoutAChipHasABlankOne();
    void writesAPartOfAChip();
    void refusesToWriteBeyondTheChip();
};

namespace {

} // namespace

void tst_ChipTable::aDriveIsNeverVisibleBeforeItsChip()
{
    TemporaryBench bench;
    std::atomic<bool> isDone{false};
    std::thread adding([&bench, &isDone] {
        BenchStore store(bench.directory());
        for (int i = 0; i < 50; ++i) {
            Drive drive = newDrive(*findModel("Pebble"));
            drive.serial = std::to_string(i);
            DriveLifeCycle(store).add(drive);
        }
        isDone = true;
    });
    std::size_t incomplete = 0;
    bool isLast = false;
    do {
        isLast = isDone;
        bench.store().read([&] {
            const DriveTable table(bench.store());
            for (const Drive &drive : table.all()) {
                incomplete += table.chip(drive).version(FlashChip::Configuration).empty() ? 1 : 0;
            }
        });
    } while (!isLast);
    adding.join();
    QCOMPARE(incomplete, std::size_t(0));
    QCOMPARE(bench.lifeCycle().drives().size(), std::size_t(50));
}

void tst_ChipTable::aDriveWithoutAChipHasABlankOne()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.execute("DELETE FROM chips");
    QCOMPARE(bench.chip("A").content(), FlashChip().content());
    bench.execute("INSERT INTO chips SELECT id, x'00' FROM drives");
    QCOMPARE(bench.chip("A").content().substr(0, 3), "\0\xff\xff"s);
}

void tst_ChipTable::writesAPartOfAChip()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Pebble");
    std::string expected = bench.chip("A").content();
    expected.replace(FlashChip::Size - 3, 3, "abc");
    expected.replace(5, 2, "\0\xff"s);
    bench.store().change([&] {
        DriveTable table(bench.store());
        table.writeChip(table.get("A"), FlashChip::Size - 3, "abc");
        table.writeChip(table.get("A"), 5, "\0\xff"s);
    });
    QCOMPARE(bench.chip("A").content(), expected);
    QVERIFY(bench.chip("B").content() != expected);
}

void tst_ChipTable::refusesToWriteBeyondTheChip()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const std::string before = bench.content();
    const auto writing = [&](std::size_t position) {
        return refusal([&] {
            bench.store().change([&] {
                DriveTable table(bench.store());
                table.writeChip(table.get("A"), position, "ab");
            });
        });
    };
    QVERIFY(!writing(FlashChip::Size - 1).empty());
    QVERIFY(!writing(FlashChip::Size).empty());
    QCOMPARE(bench.content(), before);
    bench.execute("DELETE FROM chips");
    QVERIFY(!writing(0).empty());
    QCOMPARE(refusal([&] { bench.lifeCycle().drives(); }), ""s); // the connection is none the worse
}

static const TestClass<tst_ChipTable> chipTableTests;

#include "tst_ChipTable.moc"
