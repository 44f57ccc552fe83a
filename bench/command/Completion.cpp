#include "bench/command/CommandLine.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

namespace bench {

namespace {

bool beginsWith(const std::string &text, const std::string &beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// Lets the commands below this one be parsed without being run.
void removeWork(CLI::App &parent)
{
    for (CLI::App *command : parent.get_subcommands({})) {
        command->callback(std::function<void()>());
        removeWork(*command);
    }
}

/// What may stand for an argument of that name, behind those that were parsed. Refused when the bench cannot
/// be read.
std::vector<std::string> valuesOf(
    const std::string &argument, const CLI::App &command, const CommandLine &line)
{
    std::vector<std::string> found;
    if (argument == "SERIAL") {
        BenchStore store = line.openBench();
        for (const Drive &drive : DriveLifeCycle(store).drives()) {
            found.push_back(escaped(drive.serial));
        }
    } else if (argument == "MODEL") {
        for (const Model &model : models()) {
            found.emplace_back(model.name);
        }
    } else if (argument == "FAULT" && command.get_name() == "clear") {
        BenchStore store = line.openBench();
        const std::string serial = unescaped(line.options.serial).value_or("");
        for (const Fault &fault : DriveLifeCycle(store).drive(serial).faults) {
            found.emplace_back(describe(fault.kind).name);
        }
    } else if (argument == "FAULT") {
        for (const FaultDescription &kind : faultDescriptions()) {
            found.emplace_back(kind.name);
        }
    } else if (argument == "VALUE" && line.options.fault == "text") {
        for (const RecordField &field : recordFields()) {
            found.push_back(field.name + std::string("="));
        }
    }
    return found;
}

std::vector<std::string> optionsOf(const CLI::App &command)
{
    std::vector<std::string> found;
    for (const CLI::Option *option : command.get_options()) {
        if (!option->get_positional()) {
            found.push_back("--" + option->get_lnames().front());
        }
    }
    return found;
}

/// What may stand behind what was parsed of the command: its next argument or a command below it.
std::vector<std::string> candidates(const CLI::App &command, const CommandLine &line)
{
    for (const CLI::Option *option : command.get_options()) {
        const auto most = static_cast<std::size_t>(option->get_items_expected_max());
        if (option->get_positional() && option->count() < most) {
            return valuesOf(option->get_name(), command, line);
        }
    }
    std::vector<std::string> found;
    for (const CLI::App *subcommand : command.get_subcommands({})) {
        found.push_back(subcommand->get_name());
    }
    return found;
}

} // namespace

std::string completions(CommandLine &line, const std::vector<std::string> &words)
{
    const std::string beginning = words.empty() ? "" : words.back();
    std::vector<std::string> reversed(words.rbegin() + (words.empty() ? 0 : 1), words.rend());
    removeWork(line.root());
    try {
        line.root().parse(reversed);
    } catch (const CLI::ArgumentMismatch &) {
        return {}; // the word is the value of an option
    } catch (const CLI::ParseError &) {
        // What is missing is about to be completed.
    }
    if (line.root().remaining_size(true) > 0) {
        return {};
    }
    const CLI::App *command = &line.root();
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    std::string text;
    try {
        const bool isOption = beginsWith(beginning, "-");
        for (const std::string &candidate : isOption ? optionsOf(*command) : candidates(*command, line)) {
            text += beginsWith(candidate, beginning) ? candidate + '\n' : "";
        }
    } catch (const Refused &) {
        // Of a bench that cannot be read no drive is known.
    }
    return text;
}

} // namespace bench
