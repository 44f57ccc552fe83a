#include "bench/command/CommandLine.h"
#include "bench/core/DriveJson.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdio>
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

/// One thing that can change on a bench, and how it is. It has no text while there is nothing to tell.
struct Fact
{
    std::string of; ///< a drive or the host
    std::string what;
    std::string text;
};

/// All facts, in the order in which their changes are printed.
std::vector<Fact> factsOf(const CommandLine &line)
{
    BenchStore store = line.openBench();
    std::vector<Fact> facts;
    for (const Drive &drive : DriveLifeCycle(store).drives()) {
        const std::string serial = escaped(drive.serial);
        const DriveState state = drive.state();
        std::string written;
        if (state == DriveState::Writing && drive.bytesToWrite > 0) {
            written = std::to_string(100 * drive.bytesWritten / drive.bytesToWrite) + "% ("
                + std::to_string(drive.bytesWritten) + " of " + std::to_string(drive.bytesToWrite)
                + " bytes)";
        }
        facts.insert(facts.end(),
            {{serial, "state", stateText(state)}, {serial, "written", written},
                {serial, "running", versionsText(drive.runningFirmware, drive.runningConfiguration)},
                {serial, "in flash", versionsText(drive.flashFirmware, drive.flashConfiguration)},
                {serial, "volumes", drive.mounted ? "mounted" : "not mounted"},
                {serial, "goes by", escaped(drive.reportedSerial)},
                {serial, "faults", drive.faults.empty() ? "none" : faultNames(drive.faults)},
                {serial, "last update", drive.lastUpdateText()}});
    }
    const HostState host = Host(store).state();
    facts.insert(facts.end(),
        {{"host", "companion installed", host.companionInstalled ? "yes" : "no"},
            {"host", "companion processes", std::to_string(host.processes.size())},
            {"host", "service submitted", host.serviceSubmitted ? "yes" : "no"},
            {"host", "kernel extension loaded", host.extensionLoaded ? "yes" : "no"}});
    return facts;
}

std::string timeText()
{
    const std::int64_t milliseconds = now();
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm local = {};
    char text[16] = {};
    std::strftime(text, sizeof text, "%H:%M:%S", ::localtime_r(&seconds, &local));
    char fraction[8] = {};
    std::snprintf(fraction, sizeof fraction, ".%03d", static_cast<int>(milliseconds % 1000));
    return text + std::string(fraction);
}

void printFact(const Fact &fact, bool asJson)
{
    const std::string time = timeText();
    print(asJson ? printed({{"time", time}, {"of", fact.of}, {"change", fact.what}, {"to", fact.text}}, false)
                 : time + "  " + fact.of + "  " + fact.what + ": " + fact.text + '\n');
    std::fflush(stdout);
}

void printChanges(const std::vector<Fact> &before, const std::vector<Fact> &after, bool asJson)
{
    std::map<std::pair<std::string, std::string>, std::string> former;
    for (const Fact &fact : before) {
        former[{fact.of, fact.what}] = fact.text;
    }
    for (const Fact &fact : after) {
        const auto known = former.extract({fact.of, fact.what});
        if (!fact.text.empty() && (!known || known.mapped() != fact.text)) {
            printFact(fact, asJson);
        }
    }
    for (const auto &[gone, text] : former) {
        if (gone.second == "state") {
            printFact({gone.first, "state", "removed"}, asJson);
        }
    }
}

void watch(const CommandLine &line)
{
    std::signal(SIGINT, stop);
    std::signal(SIGTERM, stop);
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(line.options.seconds.value_or(Year));
    std::vector<Fact> before = factsOf(line);
    while (stopped == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(PollInterval);
        std::vector<Fact> after = factsOf(line);
        printChanges(before, after, line.options.json);
        before = std::move(after);
    }
}

void openPanel(const Options &options)
{
    const std::string program = executableDirectory() + "/drive-bench-panel";
    ::execl(program.c_str(), program.c_str(), "--bench", options.benchDirectory.c_str(), nullptr);
    throw Refused("cannot open the panel: " + program + ": " + std::strerror(errno)
        + "; build the target drive-bench-panel");
}

} // namespace

void addWatchCommands(CommandLine &line)
{
    CLI::App *const command = line.add("watch", "Print each change on the bench as it happens",
        "Ends with Ctrl+C.", "--for 60", [&line] { watch(line); });
    command->add_flag("--json", line.options.json, "print a JSON object a line");
    addNumber(command, "--for", "SECONDS", line.options.seconds, 0, Year, "end after so long");
    line.add("panel", "Open the window with the bench", "", "", [&line] { openPanel(line.options); });
}

} // namespace bench
