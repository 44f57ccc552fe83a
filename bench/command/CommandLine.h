// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Faults.h"
#include "bench/core/Files.h"
#include "bench/core/Store.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace bench {

/// The arguments and options of all commands: a process runs one of them.
struct Options
{
    std::string benchDirectory = bench::benchDirectory();
    std::string serial; ///< as it was typed, see serialFrom()
    std::string model;
    std::vector<std::string> models;
    std::string firmware; ///< version; empty for the model's newest one
    std::string configuration; ///< revision; empty for the model's newest one
    std::optional<std::int64_t> chipset;
    std::optional<std::int64_t> rate; ///< bytes a second
    std::optional<std::int64_t> seconds;
    std::string fault;
    std::string value;
    std::string file;
    std::string imageDirectory; ///< empty for the bench's own
    bool empty = false;
    bool force = false;
    bool json = false;
    bool list = false;
    bool once = false;
    bool unplugged = false;
};

/// The command line of drive-bench: the commands and what they share.
class CommandLine
{
public:
    CommandLine();

    /// Runs what the arguments say. The exit status: 0, 1 for what was refused, 2 for a wrong usage.
    int run(int argc, char **argv);

    /// Adds a command that runs `work`. `name` may be two words, the first of which is a command that was
    /// added before. `details` follow the summary in its help and may be empty; `example` is what may stand
    /// behind the name.
    CLI::App *add(const std::string &name, const std::string &summary, const std::string &details,
        const std::string &example, const std::function<void()> &work);
    /// Adds a command that takes the serial number of a drive.
    CLI::App *addForDrive(const std::string &name, const std::string &summary, const std::string &details,
        const std::string &example, const std::function<void()> &work);

    Store openBench() const { return Store(options.benchDirectory); }
    /// Runs `work` on the drive that the arguments name; what is refused is refused as "cannot <action>
    /// <drive>: <reason>".
    void onDrive(const std::string &action,
        const std::function<void(Store &store, const std::string &serial)> &work) const;

    Options options; ///< complete when a command runs

private:
    int explain(const CLI::ParseError &error) const;

    CLI::App app;
};

// Each family of commands has a source file of its own.
void addBenchCommands(CommandLine &line); ///< init, export, image build, companion, panel
void addListCommands(CommandLine &line); ///< models, list, show
void addDriveCommands(CommandLine &line); ///< add, remove, plug, unplug, replug, power-cycle
void addFaultCommands(CommandLine &line); ///< fault, clear

/// An option that takes a whole number between the limits.
CLI::Option *addNumber(CLI::App *command, const std::string &name, const std::string &valueName,
    std::optional<std::int64_t> &number, std::int64_t minimum, std::int64_t maximum,
    const std::string &description);
/// The option --rate.
CLI::Option *addRate(CLI::App *command, Options &options);

/// A wrong usage that only a command can notice.
class WrongUsage : public CLI::ParseError
{
public:
    explicit WrongUsage(const std::string &line) : ParseError("WrongUsage", line, 2) { }
};

/// The text that an argument stands for: \xNN for any byte. Throws WrongUsage.
std::string textFrom(const std::string &argument);

/// The version that was given or, where that is empty, the other one. Throws WrongUsage when it cannot stand
/// in an image.
std::string versionFrom(const std::string &argument, const std::string &otherwise);

/// Prints on standard output.
void print(const std::string &text);

/// Prints rows of ASCII in columns as wide as they need to be.
void printColumns(const std::vector<std::vector<std::string>> &rows);

} // namespace bench
