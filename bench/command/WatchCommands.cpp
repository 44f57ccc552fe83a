#include "bench/command/CommandLine.h"
#include "bench/core/DriveJson.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Files.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <map>
#include <thread>

#include <unistd.h>

namespace bench {

namespace {

constexpr std::chrono::milliseconds PollInterval(100);
constexpr std::int64_t Year = 365 * 24 * 3600;

volatile std::sig_atomic_t stopped = 0;

void stop(int)
{
    stopped = 1;
}

/// What can be told of a bench at one moment, one short text for each thing that can change. The keys are
/// "<drive>/<number> <what>", so that a change of state prints first.
using Snapshot = std::map<std::string, std::string>;

std::string versions(const std::string &firmware, const std::string &configuration)
{
    return firmware.empty() ? "none"
                            : "firmware " + escaped(firmware) + ", configuration " + escaped(configuration);
}

Snapshot snapshotOf(const CommandLine &line)
{
    BenchStore store = line.openBench();
    Snapshot snapshot;
    for (const Drive &drive : DriveLifeCycle(store).drives()) {
        const std::string name = escaped(drive.serial);
        const DriveState state = drive.state();
        snapshot[name + "/1 state"] = stateText(state);
        if (state == DriveState::Writing && drive.bytesToWrite > 0) {
            snapshot[name + "/2 written"] = std::to_string(100 * drive.bytesWritten / drive.bytesToWrite)
                + "% (" + std::to_string(drive.bytesWritten) + " of " + std::to_string(drive.bytesToWrite)
                + " bytes)";
        }
        snapshot[name + "/3 running"] = versions(drive.runningFirmware, drive.runningConfiguration);
        snapshot[name + "/4 in flash"] = versions(drive.flashFirmware, drive.flashConfiguration);
        snapshot[name + "/5 volumes"] = drive.mounted ? "mounted" : "not mounted";
        snapshot[name + "/6 goes by"] = escaped(drive.reportedSerial);
        snapshot[name + "/7 faults"] = drive.faults.empty() ? "none" : faultNames(drive.faults);
        snapshot[name + "/8 last update"] = drive.lastUpdateText();
    }
    const HostState host = Host(store).state();
    snapshot["host/1 companion installed"] = host.companionInstalled ? "yes" : "no";
    snapshot["host/2 companion processes"] = std::to_string(host.processes.size());
    snapshot["host/3 service submitted"] = host.serviceSubmitted ? "yes" : "no";
    snapshot["host/4 kernel extension loaded"] = host.extensionLoaded ? "yes" : "no";
    return snapshot;
}

std::string timeText()
{
    const auto moment = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(moment.time_since_epoch()).count() % 1000;
    std::tm local = {};
    char text[16] = {};
    std::strftime(text, sizeof text, "%H:%M:%S", ::localtime_r(&seconds, &local));
    std::string fraction = std::to_string(milliseconds);
    fraction.insert(0, 3 - fraction.size(), '0');
    return text + ('.' + fraction);
}

void printChange(const std::string &key, const std::string &value, bool asJson)
{
    const std::size_t slash = key.rfind('/');
    const std::string who = key.substr(0, slash);
    const std::string what = key.substr(slash + 3);
    const std::string time = timeText();
    print(asJson ? printed({{"time", time}, {"of", who}, {"change", what}, {"to", value}}, false)
                 : time + "  " + who + "  " + what + ": " + value + '\n');
    std::fflush(stdout);
}

void printChanges(const Snapshot &before, const Snapshot &after, bool asJson)
{
    for (const auto &[key, value] : after) {
        const auto former = before.find(key);
        if (former == before.end() || former->second != value) {
            printChange(key, value, asJson);
        }
    }
    for (const auto &[key, value] : before) {
        const bool isState = key.size() > 8 && key.compare(key.size() - 8, 8, "/1 state") == 0;
        if (isState && after.count(key) == 0) {
            printChange(key, "removed", asJson);
        }
    }
}

void watch(const CommandLine &line, std::int64_t seconds, bool asJson)
{
    std::signal(SIGINT, stop);
    std::signal(SIGTERM, stop);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    Snapshot before = snapshotOf(line);
    while (stopped == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(PollInterval);
        const Snapshot after = snapshotOf(line);
        printChanges(before, after, asJson);
        before = after;
    }
}

void addWatch(CommandLine &line)
{
    const auto asJson = std::make_shared<bool>(false);
    const auto seconds = std::make_shared<std::int64_t>(Year);
    CLI::App *const command = line.add(&line.root(), "watch", "Print each change on the bench as it happens",
        "Ends with Ctrl+C.", "drive-bench watch --for 60");
    command->add_flag("--json", *asJson, "print a JSON object a line");
    addNumber(command, "--for", "SECONDS", *seconds, 0, Year, "end after so long");
    command->callback([=, &line] { watch(line, *seconds, *asJson); });
}

void openPanel(const CommandLine &line)
{
    const std::string program = executableDirectory() + "/drive-bench-panel";
    ::execl(program.c_str(), program.c_str(), "--bench", line.benchDirectory().c_str(), nullptr);
    throw Refused("cannot open the panel: " + program + ": " + std::strerror(errno)
        + "; build the target drive-bench-panel");
}

} // namespace

void addWatchCommands(CommandLine &line)
{
    addWatch(line);
    CLI::App *const panel =
        line.add(&line.root(), "panel", "Open the window with the bench", "", "drive-bench panel");
    panel->callback([&line] { openPanel(line); });
}

} // namespace bench
