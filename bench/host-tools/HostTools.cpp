#include "bench/host-tools/HostTools.h"

#include "bench/core/Companion.h"
#include "bench/core/Files.h"
#include "bench/core/Host.h"
#include "bench/core/Table.h"

#include <cstdio>

namespace bench {

namespace {

using Words = std::vector<std::string>;

constexpr const char *ServiceName = "com.tarvo.quaydesk.service";

/// A call that lists something: what is there on any host, and the line of the companion product.
struct Listing
{
    const char *name; ///< the call, with its arguments
    const char *lines;
    bool HostState::*hasLine;
    std::string (*line)(const HostState &host);
};

std::string serviceLine(const HostState &host)
{
    std::string id = "-";
    for (const Process &process : host.processes) {
        const bool isService = process.command.find("/tarvo_qd_service") != std::string::npos;
        id = isService ? std::to_string(process.id) : id;
    }
    return id + "\t0\t" + ServiceName + '\n';
}

std::string extensionLine(const HostState &host)
{
    return "   98    0 0xffffff7f82317000 0x3000     0x3000     com.Tarvo.Korrin (" + host.extensionVersion
        + ") <5 4 3 1>\n";
}

// clang-format off
constexpr Listing Listings[] = {
    {"ls /Library/LaunchDaemons",
        "com.apple.remotepairtool.plist\n",
        &HostState::companionInstalled, [](const HostState &) { return ServiceName + std::string(".plist\n"); }},
    {"ls /System/Library/Extensions",
        "AppleHDA.kext\nIOFireWireFamily.kext\nIOStorageFamily.kext\nIOUSBFamily.kext\n",
        &HostState::extensionInstalled, [](const HostState &) { return std::string("TarvoKorrin.kext\n"); }},
    {"ls /System/Library/Extensions/TarvoKorrin.kext",
        "",
        &HostState::extensionInstalled, [](const HostState &) { return std::string("Contents\n"); }},
    {"launchctl list",
        "PID\tStatus\tLabel\n-\t0\tcom.apple.mdworker.shared\n-\t0\tcom.apple.distnoted.xpc.agent\n",
        &HostState::serviceSubmitted, serviceLine},
    {"kextstat",
        "Index Refs Address            Size       Wired      Name (Version) <Linked Against>\n"
        "    1   82 0xffffff7f80a3c000 0x686      0x686      com.apple.kpi.bsd (12.5.0)\n"
        "   33   14 0xffffff7f80f21000 0x5c000    0x5c000    com.apple.iokit.IOUSBFamily (635.4.0) <5 4 3 1>\n",
        &HostState::extensionLoaded, extensionLine},
};
// clang-format on

int list(const Listing &listing, const HostState &host)
{
    const std::string text = listing.lines + (host.*listing.hasLine ? listing.line(host) : std::string());
    std::fputs(text.c_str(), stdout);
    return text.empty() ? 1 : 0;
}

int listProcesses(const HostState &host, bool namesOnly)
{
    std::printf(namesOnly ? "  PID COMMAND\n" : "  PID TTY           TIME CMD\n");
    for (const Process &process : host.processes) {
        const std::string name = process.command.substr(process.command.rfind('/') + 1);
        std::printf("%5lld %s%s\n", static_cast<long long>(process.id),
            namesOnly ? "" : "??         0:00.12 ", namesOnly ? name.c_str() : process.command.c_str());
    }
    return 0;
}

int setFlag(BenchStore *store, bool HostState::*flag, bool value)
{
    if (store != nullptr) {
        Host(*store).change([=](HostState &host) { host.*flag = value; });
    }
    return 0;
}

/// Starts an application of the companion product, unless it runs.
int open(BenchStore *store, const HostState &host, const std::string &bundle)
{
    const std::string application = "/Applications/Tarvo Quaydesk.app";
    const bool isStatusItem = bundle == application + "/Contents/MacOS/QDKStatusItem.app";
    if (bundle != application && !isStatusItem) {
        return NotMine;
    }
    if (!host.companionInstalled) {
        return 1;
    }
    const std::string command =
        bundle + "/Contents/MacOS/" + (isStatusItem ? "QDKStatusItem" : "Tarvo Quaydesk");
    if (!host.isRunning(command)) {
        Companion(*store, benchDirectory()).startProcess(executableDirectory() + "/host-tool", command);
    }
    return 0;
}

} // namespace

int runHostTool(BenchStore *store, const Words &words)
{
    if (words.front() == "sudo") {
        return words.size() == 1 ? NotMine : runHostTool(store, {words.begin() + 1, words.end()});
    }
    std::string call = words.front();
    for (std::size_t i = 1; i < words.size(); ++i) {
        call += ' ' + words[i];
    }
    call.erase(call.find_last_not_of('/') + 1);
    const HostState host = store == nullptr ? HostState() : Host(*store).state();
    if (const Listing *const listing = findRow(Listings, call)) {
        return list(*listing, host);
    }
    if (call == "ps -ax" || call == "ps -axcopid,command") {
        return listProcesses(host, call != "ps -ax");
    }
    if (call == std::string("launchctl remove ") + ServiceName) {
        return setFlag(store, &HostState::serviceSubmitted, false);
    }
    if (call.rfind(std::string("launchctl submit -l ") + ServiceName + ' ', 0) == 0) {
        return setFlag(store, &HostState::serviceSubmitted, true);
    }
    if (call == "kextload /System/Library/Extensions/TarvoKorrin.kext") {
        return host.extensionInstalled ? setFlag(store, &HostState::extensionLoaded, true) : 1;
    }
    return call.rfind("open ", 0) == 0 ? open(store, host, call.substr(5)) : NotMine;
}

} // namespace bench
