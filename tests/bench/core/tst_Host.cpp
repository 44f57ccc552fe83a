#include "bench/core/Companion.h"
#include "bench/core/Refused.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <SQLiteCpp/Statement.h>

#include <unistd.h>

using namespace bench;

/// What the host of a bench holds, and the companion product on it.
class tst_Host : public QObject
{
    Q_OBJECT

private slots:
    void aMissingRecordIsThatOfANewHost();
    void comesBackAsItWas();
    void aRefusedChangeChangesNothing();
    void listsLivingProcesses();
    void logsCalls();
    void companionIsInstalledAndRemoved();
    void companionNeedsItsTool();
};

void tst_Host::aMissingRecordIsThatOfANewHost()
{
    TemporaryBench bench;
    for (int i = 0; i < 2; ++i) {
        const HostState state = bench.host().state();
        QVERIFY(!state.companionInstalled && !state.serviceSubmitted && !state.extensionInstalled
            && !state.extensionLoaded && state.processes.empty());
        QCOMPARE(state.extensionVersion, "1.2.4"s);
        bench.host().change([](HostState &changed) { changed.extensionVersion = "other"; });
        bench.store().database().exec("DELETE FROM host");
    }
}

void tst_Host::comesBackAsItWas()
{
    TemporaryBench bench;
    bool HostState::*const flags[] = {&HostState::companionInstalled, &HostState::serviceSubmitted,
        &HostState::extensionInstalled, &HostState::extensionLoaded};
    for (bool HostState::*const flag : flags) {
        bench.host().change([flag](HostState &state) {
            state = HostState();
            state.*flag = true;
            state.extensionVersion = "caf\xc3\xa9";
        });
        for (bool HostState::*const other : flags) {
            QCOMPARE(bench.host().state().*other, other == flag);
        }
        QCOMPARE(bench.host().state().extensionVersion, "caf\xc3\xa9"s);
    }
}

void tst_Host::aRefusedChangeChangesNothing()
{
    TemporaryBench bench;
    const std::string before = bench.content();
    QCOMPARE(refusal([&] {
        bench.host().change([](HostState &state) {
            state.companionInstalled = true;
            throw Refused("no");
        });
    }),
        "no"s);
    QCOMPARE(bench.content(), before);
}

void tst_Host::listsLivingProcesses()
{
    TemporaryBench bench;
    const auto commands = [&] {
        std::vector<std::string> found;
        for (const Process &process : bench.host().state().processes) {
            found.push_back(std::to_string(process.id) + ' ' + process.command);
        }
        return found;
    };
    const auto self = static_cast<std::int64_t>(::getpid());
    const std::vector<std::string> alive{std::to_string(self) + " /bin/service"};
    bench.host().addProcess({self, "/bin/other"});
    bench.host().addProcess({self, "/bin/service"});
    bench.host().addProcess({std::numeric_limits<std::int32_t>::max(), "/bin/never"});
    QCOMPARE(commands(), alive);
    // One that was not heard of for five seconds is gone, whoever has its number now, until it is heard of.
    bench.store().database().exec("UPDATE processes SET heartbeat = heartbeat - 5001");
    QCOMPARE(commands(), std::vector<std::string>());
    QVERIFY(bench.host().beat(self));
    QCOMPARE(commands(), alive);
    bench.host().change([](HostState &state) { state.processes.clear(); });
    QCOMPARE(commands(), alive); // they are added and removed by themselves
    bench.host().removeProcesses();
    QCOMPARE(commands(), std::vector<std::string>());
    QVERIFY(!bench.host().beat(self));
    QCOMPARE(commands(), std::vector<std::string>());
}

void tst_Host::logsCalls()
{
    TemporaryBench bench;
    bench.host().logCall({"ls", "a b", "it's", ""});
    bench.host().logCall({"ps"});
    bench.host().restoreCall("as it is");
    QCOMPARE(bench.host().calls(), (std::vector<std::string>{"ls 'a b' 'it'\\''s' ''", "ps", "as it is"}));
}

void tst_Host::companionIsInstalledAndRemoved()
{
    TemporaryBench bench;
    Companion companion(bench.store(), bench.directory());
    const std::string before = bench.content();
    QCOMPARE(refusal([&] { companion.uninstall(); }),
        "the companion is not installed; to install it, use: drive-bench companion install"s);
    QCOMPARE(refusal([&] { companion.start("tool"); }),
        "the companion is not installed; first use: drive-bench companion install"s);
    QCOMPARE(refusal([&] { companion.stop(); }),
        "the companion is not running; to start it, use: drive-bench companion start"s);
    QCOMPARE(bench.content(), before);
    companion.install();
    QVERIFY(bench.host().state().companionInstalled && bench.host().state().extensionInstalled);
    QVERIFY(!bench.host().state().serviceSubmitted && !bench.host().state().extensionLoaded);
    QCOMPARE(refusal([&] { companion.install(); }),
        "the companion is installed already; to remove it, use: drive-bench companion uninstall"s);
    companion.uninstall();
    QVERIFY(!bench.host().state().companionInstalled && !bench.host().state().extensionInstalled);
}

void tst_Host::companionNeedsItsTool()
{
    TemporaryBench bench;
    Companion companion(bench.store(), bench.directory());
    companion.install();
    const std::string before = bench.content();
    QCOMPARE(refusal([&] { companion.start("/nowhere/tool"); }),
        "cannot start /nowhere/tool: No such file or directory; it must lie in the directory host-tools "
        "beside "
        "drive-bench"s);
    QCOMPARE(bench.content(), before);
    bench.host().addProcess({::getpid(), "service"});
    QCOMPARE(refusal([&] { companion.start("/nowhere/tool"); }),
        "the companion is running already; to stop it, use: drive-bench companion stop"s);
}

static const TestClass<tst_Host> hostTests;

#include "tst_Host.moc"
