#include "bench/command/CommandLine.h"
#include "bench/core/Companion.h"
#include "bench/core/Files.h"

namespace bench {

namespace {

void addAction(CommandLine &line, CLI::App *parent, const std::string &name, const std::string &summary,
    const std::string &details, const std::function<void(Companion &companion)> &action)
{
    CLI::App *const command = line.add(parent, name, summary, details, "drive-bench companion " + name);
    command->callback([&line, action] {
        BenchStore store = line.openBench();
        Companion companion(store, line.benchDirectory());
        action(companion);
    });
}

} // namespace

void addCompanionCommands(CommandLine &line)
{
    CLI::App *const parent = line.add(&line.root(), "companion",
        "Install, start, stop or remove the companion product", "", "drive-bench companion install");
    parent->require_subcommand(1);
    addAction(line, parent, "install", "Install the companion product",
        "Its service's property list and the kernel extension are then in place, and the program warns of "
        "it.",
        [](Companion &companion) { companion.install(); });
    addAction(line, parent, "uninstall", "Stop and remove the companion product", "",
        [](Companion &companion) { companion.uninstall(); });
    addAction(line, parent, "start", "Start its applications and its service",
        "Each is a process of its own, which may be killed.",
        [](Companion &companion) { companion.start(executableDirectory() + "/host-tools/host-tool"); });
    addAction(line, parent, "stop", "Stop its applications and its service", "",
        [](Companion &companion) { companion.stop(); });
}

} // namespace bench
