#include "bench/host-tools/HostTools.h"

#include "bench/core/Companion.h"
#include "bench/core/Files.h"
#include "bench/core/Host.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

using Arguments = std::vector<std::string>;

constexpr const char *ServiceName = "com.tarvo.quaydesk.service";
constexpr const char *ServiceProgram = "/tarvo_qd_service";
constexpr const char *ExtensionName = "com.Tarvo.Korrin";

HostState hostOf(BenchStore *store)
{
    return store == nullptr ? HostState() : Host(*store).state();
}

std::string baseName(const std::string &command)
{
    return command.substr(command.rfind('/') + 1);
}

bool endsWith(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

int listServices(const HostState &host)
{
    std::printf("PID\tStatus\tLabel\n-\t0\tcom.apple.mdworker.shared\n-\t0\tcom.apple.distnoted.xpc.agent\n");
    if (host.serviceSubmitted) {
        std::string id = "-";
        for (const Process &process : host.processes) {
            id = endsWith(process.command, ServiceProgram) ? std::to_string(process.id) : id;
        }
        std::printf("%s\t0\t%s\n", id.c_str(), ServiceName);
    }
    return 0;
}

int launchctl(BenchStore *store, const Arguments &arguments)
{
    if (arguments == Arguments{"list"}) {
        return listServices(hostOf(store));
    }
    const bool namesService = std::find(arguments.begin(), arguments.end(), ServiceName) != arguments.end();
    const bool submits = namesService && arguments.front() == "submit";
    const bool removes = namesService && arguments.front() == "remove" && arguments[1] == ServiceName;
    if (!submits && !removes) {
        return NotMine;
    }
    if (store != nullptr) {
        Host(*store).change([submits](HostState &state) { state.serviceSubmitted = submits; });
    }
    return 0;
}

int ps(BenchStore *store, const Arguments &arguments)
{
    const bool namesOnly = arguments == Arguments{"-axcopid,command"};
    if (!namesOnly && arguments != Arguments{"-ax"}) {
        return NotMine;
    }
    std::printf(namesOnly ? "  PID COMMAND\n" : "  PID TTY           TIME CMD\n");
    for (const Process &process : hostOf(store).processes) {
        const auto id = static_cast<long long>(process.id);
        if (namesOnly) {
            std::printf("%5lld %s\n", id, baseName(process.command).c_str());
        } else {
            std::printf("%5lld ??         0:00.12 %s\n", id, process.command.c_str());
        }
    }
    return 0;
}

int ls(BenchStore *store, const Arguments &arguments)
{
    if (arguments.size() != 1) {
        return NotMine;
    }
    const std::string directory = arguments.front().substr(0, arguments.front().find_last_not_of('/') + 1);
    if (directory == "/Library/LaunchDaemons") {
        std::printf("com.apple.remotepairtool.plist\n");
        if (hostOf(store).companionInstalled) {
            std::printf("%s.plist\n", ServiceName);
        }
        return 0;
    }
    if (directory == "/System/Library/Extensions") {
        std::printf("AppleHDA.kext\nIOFireWireFamily.kext\nIOStorageFamily.kext\nIOUSBFamily.kext\n");
        if (hostOf(store).extensionInstalled) {
            std::printf("TarvoKorrin.kext\n");
        }
        return 0;
    }
    if (directory == "/System/Library/Extensions/TarvoKorrin.kext") {
        const bool isThere = hostOf(store).extensionInstalled;
        std::printf("%s", isThere ? "Contents\n" : "");
        return isThere ? 0 : 1;
    }
    return NotMine;
}

int kextstat(BenchStore *store, const Arguments &arguments)
{
    if (!arguments.empty()) {
        return NotMine;
    }
    std::printf("Index Refs Address            Size       Wired      Name (Version) <Linked Against>\n"
                "    1   82 0xffffff7f80a3c000 0x686      0x686      com.apple.kpi.bsd (12.5.0)\n"
                "   33   14 0xffffff7f80f21000 0x5c000    0x5c000    com.apple.iokit.IOUSBFamily (635.4.0) "
                "<5 4 3 1>\n");
    const HostState host = hostOf(store);
    if (host.extensionLoaded) {
        std::printf("   98    0 0xffffff7f82317000 0x3000     0x3000     %s (%s) <5 4 3 1>\n", ExtensionName,
            host.extensionVersion.c_str());
    }
    return 0;
}

int kextload(BenchStore *store, const Arguments &arguments)
{
    if (arguments != Arguments{"/System/Library/Extensions/TarvoKorrin.kext"}) {
        return NotMine;
    }
    if (!hostOf(store).extensionInstalled) {
        return 1;
    }
    Host(*store).change([](HostState &state) { state.extensionLoaded = true; });
    return 0;
}

int open(BenchStore *store, const Arguments &arguments)
{
    const std::string application = "/Applications/Tarvo Quaydesk.app";
    const std::string statusItem = application + "/Contents/MacOS/QDKStatusItem.app";
    if (arguments.size() != 1 || (arguments.front() != application && arguments.front() != statusItem)) {
        return NotMine;
    }
    const HostState host = hostOf(store);
    if (!host.companionInstalled) {
        return 1;
    }
    const std::string name = arguments.front() == application ? "Tarvo Quaydesk" : "QDKStatusItem";
    const std::string command = arguments.front() + "/Contents/MacOS/" + name;
    const bool isRunning = std::any_of(host.processes.begin(), host.processes.end(),
        [&command](const Process &process) { return process.command == command; });
    if (!isRunning) {
        Companion(*store, benchDirectory()).startProcess(executableDirectory() + "/host-tool", command);
    }
    return 0;
}

int sudo(BenchStore *store, const Arguments &arguments)
{
    return arguments.empty()
        ? NotMine
        : runHostTool(store, arguments.front(), {arguments.begin() + 1, arguments.end()});
}

struct HostTool
{
    const char *name;
    int (*run)(BenchStore *store, const Arguments &arguments);
};

constexpr HostTool HostTools[] = {
    {"launchctl", launchctl},
    {"ps", ps},
    {"ls", ls},
    {"kextstat", kextstat},
    {"kextload", kextload},
    {"open", open},
    {"sudo", sudo},
};

} // namespace

int runHostTool(BenchStore *store, const std::string &name, const Arguments &arguments)
{
    for (const HostTool &tool : HostTools) {
        if (name == tool.name) {
            return tool.run(store, arguments);
        }
    }
    return NotMine;
}

} // namespace bench
