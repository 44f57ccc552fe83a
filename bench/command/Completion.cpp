#include "bench/command/CommandLine.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <algorithm>

namespace bench {

namespace {

/// The command line up to the word that is to be completed.
struct Position
{
    CLI::App *command;
    std::vector<std::string> arguments = {}; ///< of the command, without options
    std::string benchDirectory = bench::benchDirectory();
    std::string option = {}; ///< the word is the value of this one; empty where it is not
};

bool isOption(const std::string &word)
{
    return word.compare(0, 1, "-") == 0;
}

Position positionBehind(CLI::App &root, const std::vector<std::string> &words)
{
    Position position{&root};
    const auto setOption = [&position](const std::string &option, const std::string &value) {
        position.benchDirectory = option == "--bench" ? value : position.benchDirectory;
    };
    for (const std::string &word : words) {
        const std::size_t equals = std::min(word.find('='), word.size());
        const auto commands = position.command->get_subcommands(
            [&word](const CLI::App *command) { return command->get_name() == word; });
        if (!position.option.empty()) {
            setOption(position.option, word);
            position.option.clear();
        } else if (isOption(word) && equals < word.size()) {
            setOption(word.substr(0, equals), word.substr(equals + 1));
        } else if (isOption(word)) {
            const CLI::Option *const option = position.command->get_option_no_throw(word);
            position.option = option != nullptr && option->get_items_expected_max() > 0 ? word : "";
        } else if (!commands.empty()) {
            position.command = commands.front();
        } else {
            position.arguments.push_back(word);
        }
    }
    return position;
}

/// The argument that comes next, null when the command takes no more.
const CLI::Option *nextArgument(const Position &position)
{
    std::size_t taken = position.arguments.size();
    for (const CLI::Option *option : position.command->get_options()) {
        const auto count = static_cast<std::size_t>(option->get_items_expected_max());
        if (option->get_positional() && taken < count) {
            return option;
        }
        taken -= option->get_positional() ? count : 0;
    }
    return nullptr;
}

/// What may stand for an argument of that name behind those that are there.
std::vector<std::string> candidates(const std::string &argument, const Position &position)
{
    std::vector<std::string> found;
    if (argument == "SERIAL") {
        BenchStore store(position.benchDirectory);
        for (const Drive &drive : DriveLifeCycle(store).drives()) {
            found.push_back(escaped(drive.serial));
        }
    } else if (argument == "MODEL") {
        for (const Model &model : models()) {
            found.emplace_back(model.name);
        }
    } else if (argument == "FAULT" && position.command->get_name() == "clear") {
        BenchStore store(position.benchDirectory);
        const std::string serial = unescaped(position.arguments.front()).value_or("");
        for (const Fault &fault : DriveLifeCycle(store).drive(serial).faults) {
            found.emplace_back(describe(fault.kind).name);
        }
    } else if (argument == "FAULT") {
        for (const FaultDescription &kind : faultDescriptions()) {
            found.emplace_back(kind.name);
        }
    } else if (argument == "VALUE" && position.arguments.back() == "text") {
        for (const RecordField &field : recordFields()) {
            found.push_back(field.name + std::string("="));
        }
    }
    return found;
}

std::vector<std::string> allCandidates(const Position &position, const std::string &beginning)
{
    std::vector<std::string> found;
    if (!position.option.empty()) {
        return found;
    }
    if (isOption(beginning)) {
        for (const CLI::Option *option : position.command->get_options()) {
            if (!option->get_positional()) {
                found.push_back("--" + option->get_lnames().front());
            }
        }
        return found;
    }
    if (const CLI::Option *const argument = nextArgument(position)) {
        return candidates(argument->get_name(), position);
    }
    if (position.arguments.empty()) {
        for (const CLI::App *command : position.command->get_subcommands({})) {
            found.push_back(command->get_name());
        }
    }
    return found;
}

} // namespace

std::string completions(CommandLine &line, const std::vector<std::string> &words)
{
    const std::string beginning = words.empty() ? std::string() : words.back();
    const std::vector<std::string> before(words.begin(), words.empty() ? words.end() : words.end() - 1);
    std::string text;
    try {
        for (const std::string &candidate : allCandidates(positionBehind(line.root(), before), beginning)) {
            text += candidate.compare(0, beginning.size(), beginning) == 0 ? candidate + '\n' : "";
        }
    } catch (const Refused &) {
        return {}; // of a bench that cannot be read no drive is known
    }
    return text;
}

} // namespace bench
