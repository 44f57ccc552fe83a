#include "bench/command/CommandLine.h"
#include "bench/core/Companion.h"

namespace bench {

namespace {

void addAction(CommandLine &line, const std::string &name, const std::string &summary,
    const std::string &details, const std::function<void(Companion &companion)> &action)
{
    line.add("companion " + name, summary, details, "", [&line, action] {
        BenchStore store = line.openBench();
        Companion companion(store, line.options.benchDirectory);
        action(companion);
    });
}

} // namespace

void addCompanionCommands(CommandLine &line)
{
    line.add("companion", "Install, start, stop or remove the companion product", "", "install", {})
        ->require_subcommand(1);
    addAction(line, "install", "Install the companion product",
        "Its service's property list and the kernel extension are then in place, and the program warns of "
        "it.",
        [](Companion &companion) { companion.install(); });
    addAction(line, "uninstall", "Stop and remove the companion product", "",
        [](Companion &companion) { companion.uninstall(); });
    addAction(line, "start", "Start its applications and its service",
        "Each is a process of its own, which may be killed.",
        [](Companion &companion) { companion.start(executableDirectory() + "/host-tools/host-tool"); });
    addAction(line, "stop", "Stop its applications and its service", "",
        [](Companion &companion) { companion.stop(); });
}

} // namespace bench
