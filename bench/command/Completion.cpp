#include "bench/command/Completion.h"

#include "bench/command/CommandLine.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Files.h"
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
    bool isValue = false; ///< the word is the value of an option
};

CLI::App *subcommand(CLI::App *parent, const std::string &name)
{
    for (CLI::App *command : parent->get_subcommands({})) {
        if (command->get_name() == name) {
            return command;
        }
    }
    return nullptr;
}

Position positionBehind(CLI::App &root, const std::vector<std::string> &words)
{
    Position position{&root};
    std::string option;
    for (const std::string &word : words) {
        if (position.isValue) {
            position.benchDirectory = option == "--bench" ? word : position.benchDirectory;
            position.isValue = false;
        } else if (word.compare(0, 1, "-") == 0) {
            const std::size_t equals = std::min(word.find('='), word.size());
            option = word.substr(0, equals);
            const CLI::Option *const known = position.command->get_option_no_throw(option);
            const bool hasValue = equals < word.size();
            position.isValue = known != nullptr && known->get_items_expected_max() > 0 && !hasValue;
            position.benchDirectory =
                option == "--bench" && hasValue ? word.substr(equals + 1) : position.benchDirectory;
        } else if (CLI::App *const command = subcommand(position.command, word)) {
            position.command = command;
        } else {
            position.arguments.push_back(word);
        }
    }
    return position;
}

std::vector<Drive> drivesOf(const std::string &benchDirectory)
{
    try {
        BenchStore store(benchDirectory);
        return DriveLifeCycle(store).drives();
    } catch (const Refused &) {
        return {};
    }
}

/// What may stand for an argument of that name behind those that are there.
std::vector<std::string> candidates(const std::string &argument, const Position &position)
{
    std::vector<std::string> found;
    if (argument == "SERIAL") {
        for (const Drive &drive : drivesOf(position.benchDirectory)) {
            found.push_back(escaped(drive.serial));
        }
    } else if (argument == "MODEL") {
        for (const Model &model : models()) {
            found.emplace_back(model.name);
        }
    } else if (argument == "FAULT" && position.command->get_name() == "clear") {
        for (const Drive &drive : drivesOf(position.benchDirectory)) {
            for (const Fault &fault : drive.faults) {
                if (escaped(drive.serial) == position.arguments.front()) {
                    found.emplace_back(describe(fault.kind).name);
                }
            }
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
    if (position.isValue) {
        return found;
    }
    std::vector<std::string> arguments;
    for (const CLI::Option *option : position.command->get_options()) {
        const bool isArgument = option->get_positional();
        if (isArgument) {
            // The last argument of many is repeated for any further one.
            const int count = std::min(option->get_items_expected_max(), 1000);
            arguments.insert(arguments.end(), static_cast<std::size_t>(count), option->get_name());
        } else if (beginning.compare(0, 1, "-") == 0) {
            found.push_back("--" + option->get_lnames().front());
        }
    }
    if (beginning.compare(0, 1, "-") == 0) {
        return found;
    }
    if (position.arguments.empty()) {
        for (const CLI::App *command : position.command->get_subcommands({})) {
            found.push_back(command->get_name());
        }
    }
    return position.arguments.size() < arguments.size()
        ? candidates(arguments[position.arguments.size()], position)
        : found;
}

} // namespace

std::string completions(CommandLine &line, const std::vector<std::string> &words)
{
    const std::string beginning = words.empty() ? std::string() : words.back();
    const std::vector<std::string> before(words.begin(), words.empty() ? words.end() : words.end() - 1);
    std::string text;
    for (const std::string &candidate : allCandidates(positionBehind(line.root(), before), beginning)) {
        if (candidate.compare(0, beginning.size(), beginning) == 0) {
            text += candidate + '\n';
        }
    }
    return text;
}

} // namespace bench
