#include "bench/core/Companion.h"

#include "bench/core/Refused.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ; // NOLINT(readability-redundant-declaration): macOS declares it nowhere

namespace bench {

namespace {

constexpr std::chrono::milliseconds BeatInterval(500);
constexpr std::chrono::milliseconds StartPollInterval(10);
constexpr int StartPolls = 500;

constexpr const char *Programs[] = {
    "/Applications/Tarvo Quaydesk.app/Contents/MacOS/Tarvo Quaydesk",
    "/Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app/Contents/MacOS/QDKStatusItem",
    "/Library/Application Support/Tarvo/Quaydesk/tarvo_qd_service",
};

} // namespace

Companion::Companion(BenchStore &store, std::string benchDirectory)
    : store(store), directory(std::move(benchDirectory))
{
}

void Companion::install()
{
    Host(store).change([](HostState &host) {
        require(!host.companionInstalled,
            "the companion is installed already; to remove it, use: drive-bench companion uninstall");
        host.companionInstalled = true;
        host.extensionInstalled = true;
    });
}

void Companion::uninstall()
{
    endProcesses([](HostState &host) {
        require(host.companionInstalled,
            "the companion is not installed; to install it, use: drive-bench companion install");
        host.companionInstalled = false;
        host.serviceSubmitted = false;
        host.extensionInstalled = false;
        host.extensionLoaded = false;
    });
}

void Companion::start(const std::string &tool)
{
    Host(store).change([&tool](HostState &host) {
        require(host.companionInstalled,
            "the companion is not installed; first use: drive-bench companion install");
        require(host.processes.empty(),
            "the companion is running already; to stop it, use: drive-bench companion stop");
        if (::access(tool.c_str(), X_OK) != 0) {
            throw Refused("cannot start " + tool + ": " + std::generic_category().message(errno)
                + "; it must lie in the directory host-tools beside drive-bench");
        }
        host.serviceSubmitted = true;
        host.extensionLoaded = true;
    });
    for (const char *program : Programs) {
        startProcess(tool, program);
    }
}

void Companion::stop()
{
    endProcesses([](HostState &host) {
        require(!host.processes.empty(),
            "the companion is not running; to start it, use: drive-bench companion start");
        host.serviceSubmitted = false;
        host.extensionLoaded = false;
    });
}

/// Changes the host and takes its processes off the list, atomically; then it ends them.
void Companion::endProcesses(const std::function<void(HostState &host)> &work)
{
    const std::vector<Process> ended = store.change([&] {
        Host host(store);
        host.change(work);
        std::vector<Process> processes = host.state().processes;
        host.removeProcesses();
        return processes;
    });
    for (const Process &process : ended) {
        ::kill(static_cast<pid_t>(process.id), SIGTERM);
    }
}

void Companion::startProcess(const std::string &tool, const std::string &command)
{
    const std::string bench = std::filesystem::absolute(directory).string();
    std::string arguments[] = {tool, "--process", bench, command};
    char *const vector[] = {
        arguments[0].data(), arguments[1].data(), arguments[2].data(), arguments[3].data(), nullptr};
    pid_t starter = 0;
    const int error = ::posix_spawn(&starter, tool.c_str(), nullptr, nullptr, vector, environ);
    require(error == 0, "cannot start " + tool + ": " + std::generic_category().message(error));
    ::waitpid(starter, nullptr, 0); // it ends at once and leaves a process of its own behind
    for (int poll = 0; poll < StartPolls; ++poll) {
        if (Host(store).state().isRunning(command)) {
            return;
        }
        std::this_thread::sleep_for(StartPollInterval);
    }
    throw Refused(command + " did not come up within 5 seconds");
}

void standFor(const std::string &command, const std::string &benchDirectory)
{
    const auto id = static_cast<std::int64_t>(::getpid());
    const auto onHost = [&](const auto &work) {
        // Opened anew each time: another bench may have taken the place of the one that listed this process.
        BenchStore store(benchDirectory);
        return work(Host(store));
    };
    onHost([&](Host host) { host.addProcess({id, command}); });
    do {
        std::this_thread::sleep_for(BeatInterval);
    } while (onHost([&](Host host) { return host.beat(id); }));
}

} // namespace bench
