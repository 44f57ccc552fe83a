// SPDX-License-Identifier: MIT
#include "bench/command/CommandLine.h"

#include "Version.h"
#include "bench/core/Image.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace bench {

namespace {

int refuse(const std::string &line)
{
    std::fprintf(stderr, "drive-bench: %s\n", line.c_str());
    return 1;
}

/// No option and no argument is empty: an unset variable of a script must not pass for a name.
void refuseEmptyValues(const CLI::App &command)
{
    for (const CLI::Option *option : command.get_options()) {
        const auto &values = option->results();
        if (std::find(values.begin(), values.end(), "") != values.end()) {
            throw WrongUsage(option->get_name() + " needs a value that is not empty");
        }
    }
}

} // namespace

CommandLine::CommandLine() : app("A bench of simulated drives, in place of drives on a desk.", "drive-bench")
{
    app.add_option("--bench", options.benchDirectory, "the directory of the bench, instead of $TARVO_BENCH")
        ->type_name("DIR");
    app.fallthrough();
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
}

CLI::App *CommandLine::add(const std::string &name, const std::string &summary, const std::string &details,
    const std::string &example, const std::function<void()> &work)
{
    const std::size_t space = name.find(' ');
    CLI::App *const parent = space == std::string::npos ? &app : app.get_subcommand(name.substr(0, space));
    CLI::App *const command = parent->add_subcommand(name.substr(space + 1), summary);
    command->fallthrough();
    command->footer(details + (details.empty() ? "" : "\n\n") + "Example:\n  drive-bench " + name
        + (example.empty() ? "" : ' ' + example));
    command->callback([this, command, work] {
        refuseEmptyValues(app);
        refuseEmptyValues(*command);
        if (work) {
            work();
        }
    });
    return command;
}

CLI::App *CommandLine::addForDrive(const std::string &name, const std::string &summary,
    const std::string &details, const std::string &example, const std::function<void()> &work)
{
    CLI::App *const command = add(name, summary, details, example, work);
    command->add_option("SERIAL", options.serial, "the drive")->required();
    return command;
}

void CommandLine::onDrive(
    const std::string &action, const std::function<void(Store &store, const std::string &serial)> &work) const
{
    const std::string serial = textFrom(options.serial);
    attempt("cannot " + action + ' ' + options.serial, [&] {
        Store store = openBench();
        work(store, serial);
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
    } catch (const std::bad_alloc &) {
        return refuse("there is not enough memory");
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
    if (!command->get_subcommands({}).empty() && !unknown.empty()) {
        const std::string &word = unknown.front();
        line =
            (word.compare(0, 1, "-") == 0 ? "there is no option \"" : "there is no command \"") + word + '"';
    }
    refuse(shortened(oneLine(line)) + "; see: " + name + " --help");
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
        return fits ? std::string() : "needs " + wholeNumber(minimum, maximum);
    };
    return command->add_option(name, number, description)
        ->type_name(valueName)
        ->transform(CLI::Validator(toDecimal, ""));
}

CLI::Option *addRate(CLI::App *command, Options &options)
{
    return addNumber(command, "--rate", "BYTES", options.rate, 1, Drive::MaximumFlashRate,
        "flash rate in bytes a second (" + std::to_string(Drive::DefaultFlashRate) + ')');
}

std::string textFrom(const std::string &argument)
{
    const auto text = unescaped(argument);
    if (!text) {
        throw WrongUsage('"' + argument + "\" must hold characters up to U+00FF, and \\xNN for any byte");
    }
    return *text;
}

std::string versionFrom(const std::string &argument, const std::string &otherwise)
{
    const std::string &version = argument.empty() ? otherwise : argument;
    const bool isAscii = std::all_of(version.begin(), version.end(), [](char letter) { return letter > 0; });
    if (version.size() > Image::MaximumText || !isAscii) {
        throw WrongUsage("--firmware and --configuration take 1 to " + std::to_string(Image::MaximumText)
            + " ASCII characters each");
    }
    return version;
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

} // namespace bench
