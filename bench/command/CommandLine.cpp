#include "bench/command/CommandLine.h"

#include "Version.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace bench {

namespace {

int refuse(const std::string &line)
{
    std::fprintf(stderr, "drive-bench: %s\n", line.c_str());
    return 1;
}

/// How many letters have to be changed, added or left out to make one word of the other.
std::size_t editDistance(const std::string &left, const std::string &right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (const char letter : left) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t replaced = diagonal + (letter == right[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

/// " (did you mean "plug"?)" where a command has a similar name.
std::string suggestion(const CLI::App &parent, const std::string &word)
{
    std::size_t least = 3;
    std::string nearest;
    for (const CLI::App *command : parent.get_subcommands({})) {
        const std::size_t distance = editDistance(word, command->get_name());
        if (distance < least) {
            least = distance;
            nearest = command->get_name();
        }
    }
    return nearest.empty() ? std::string() : " (did you mean \"" + nearest + "\"?)";
}

} // namespace

CommandLine::CommandLine() : app("A bench of simulated drives, in place of drives on a desk.", "drive-bench")
{
    addBenchOption(&app);
    app.set_version_flag("--version", std::string("drive-bench ") + TarvoVersion);
    app.get_formatter()->column_width(34);
    app.require_subcommand(1);
    app.footer(
        "Every command takes --bench DIR and --help. Without --bench and $TARVO_BENCH the bench is in the\n"
        "directory \"bench\" beside the executable, for an installed package in\n"
        "$XDG_DATA_HOME/tarvo-drive-bench. Exit status: 0 done, 1 refused, 2 wrong usage.\n\n"
        "Example:\n  drive-bench init --bench /tmp/bench");
    addBenchCommands(*this);
    addListCommands(*this);
    addDriveCommands(*this);
    addFaultCommands(*this);
    addImageCommands(*this);
    addCompanionCommands(*this);
    addWatchCommands(*this);
}

CLI::App *CommandLine::add(const std::string &name, const std::string &summary, const std::string &details,
    const std::string &example, const std::function<void()> &work)
{
    const std::size_t space = name.find(' ');
    CLI::App *const parent = space == std::string::npos ? &app : app.get_subcommand(name.substr(0, space));
    CLI::App *const command =
        parent->add_subcommand(space == std::string::npos ? name : name.substr(space + 1), summary);
    addBenchOption(command);
    command->footer(details + (details.empty() ? "" : "\n\n") + "Example:\n  drive-bench " + name
        + (example.empty() ? "" : ' ' + example));
    command->callback(work);
    return command;
}

CLI::App *CommandLine::addForDrive(const std::string &name, const std::string &summary,
    const std::string &details, const std::string &example, const std::function<void()> &work)
{
    CLI::App *const command = add(name, summary, details, example, work);
    command->add_option("SERIAL", options.serial, "the drive")->required();
    return command;
}

void CommandLine::addBenchOption(CLI::App *command)
{
    command
        ->add_option("--bench", options.benchDirectory, "the directory of the bench, instead of $TARVO_BENCH")
        ->type_name("DIR");
}

void CommandLine::onDrive(const std::string &action,
    const std::function<void(DriveLifeCycle &drives, const std::string &serial)> &work) const
{
    attempt(action + ' ' + options.serial, [&] {
        const std::string serial = serialFrom(options.serial);
        BenchStore store = openBench();
        DriveLifeCycle drives(store);
        work(drives, serial);
    });
}

int CommandLine::run(int argc, char **argv)
{
    if (argc < 2) {
        print(app.help());
        return 2;
    }
    try {
        app.parse(argc, argv);
        return 0;
    } catch (const CLI::Success &success) {
        return app.exit(success);
    } catch (const CLI::ParseError &error) {
        return explain(error);
    } catch (const Refused &refused) {
        return refuse(refused.what());
    }
}

int CommandLine::explain(const CLI::ParseError &error) const
{
    const CLI::App *command = &app;
    std::string name = "drive-bench";
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
        name += ' ' + command->get_name();
    }
    std::string line = error.what();
    const std::vector<std::string> unknown = app.remaining(true);
    const bool isGroup = !command->get_subcommands({}).empty();
    if (isGroup && !unknown.empty()) {
        const std::string &word = unknown.front();
        line = word.compare(0, 1, "-") == 0
            ? "there is no option \"" + word + '"'
            : "there is no command \"" + word + '"' + suggestion(*command, word);
    }
    refuse(oneLine(line) + "; see: " + name + " --help");
    return 2;
}

CLI::Option *addNumber(CLI::App *command, const std::string &name, const std::string &valueName,
    std::optional<std::int64_t> &number, std::int64_t minimum, std::int64_t maximum,
    const std::string &description)
{
    // The library itself would read 010 as an octal number.
    const auto toDecimal = [=](std::string &text) {
        const auto given = numberFromText(text);
        const bool fits = given && *given >= minimum && *given <= maximum;
        text = fits ? std::to_string(*given) : text;
        return fits
            ? std::string()
            : "needs a whole number from " + std::to_string(minimum) + " to " + std::to_string(maximum);
    };
    return command->add_option(name, number, description)
        ->type_name(valueName)
        ->transform(CLI::Validator(toDecimal, ""));
}

std::string serialFrom(const std::string &argument)
{
    const auto serial = unescaped(argument);
    if (!serial || serial->empty()) {
        throw WrongUsage('"' + argument
            + "\" is no serial number: it holds characters up to U+00FF, and \\xNN for any byte");
    }
    return *serial;
}

std::string versionFrom(const std::string &argument, const std::string &otherwise)
{
    const std::string &version = argument.empty() ? otherwise : argument;
    const bool isAscii = std::all_of(version.begin(), version.end(), [](char letter) { return letter > 0; });
    if (version.size() > FirmwareImage::MaximumText || !isAscii) {
        throw WrongUsage("--firmware and --configuration take 1 to "
            + std::to_string(FirmwareImage::MaximumText) + " ASCII characters each");
    }
    return version;
}

const Model &modelNamed(const std::string &name)
{
    const Model *const model = findModel(name);
    if (model == nullptr) {
        throw Refused("there is no such model; drive-bench models lists them");
    }
    return *model;
}

void print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void printColumns(const std::vector<std::vector<std::string>> &rows)
{
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto &row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size() + 2);
        }
    }
    for (const auto &row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            line.resize(line.size() + widths[i] - row[i].size(), ' ');
        }
        print(line.substr(0, line.find_last_not_of(' ') + 1) + '\n');
    }
}

std::string versionsText(const std::string &firmware, const std::string &configuration)
{
    return firmware.empty() ? "none"
                            : "firmware " + escaped(firmware) + ", configuration " + escaped(configuration);
}

void attempt(const std::string &action, const std::function<void()> &work)
{
    try {
        work();
    } catch (const Refused &refused) {
        throw Refused("cannot " + action + ": " + refused.what());
    }
}

} // namespace bench
