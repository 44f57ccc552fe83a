#pragma once

#include "bench/core/BenchStore.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

namespace bench {

/// The command line of drive-bench: the commands and what they share.
class CommandLine
{
public:
    CommandLine();

    /// Runs what the arguments say. The exit status: 0, 1 for what was refused, 2 for a wrong usage.
    int run(int argc, char **argv);

    CLI::App &root() { return app; }
    const std::string &benchDirectory() const { return directory; }
    BenchStore openBench() const { return BenchStore(directory); }

    /// Adds a command to `parent`. `summary` begins its help and stands in the list of commands, `details`
    /// follows and may be empty, `example` is a whole command line.
    CLI::App *add(CLI::App *parent, const std::string &name, const std::string &summary,
        const std::string &details, const std::string &example);

private:
    int explain(const CLI::ParseError &error) const;

    CLI::App app;
    std::string directory;
};

// Each family of commands has a source file of its own.
void addBenchCommands(CommandLine &line); ///< init, export
void addListCommands(CommandLine &line); ///< models, list, show
void addDriveCommands(CommandLine &line); ///< add, remove, plug, unplug, replug, power-cycle
void addFaultCommands(CommandLine &line); ///< fault, clear
void addImageCommands(CommandLine &line); ///< image build, image inspect
void addCompanionCommands(CommandLine &line); ///< companion install, uninstall, start, stop
void addWatchCommands(CommandLine &line); ///< watch, panel

/// An option that takes a whole number between the limits.
CLI::Option *addNumber(CLI::App *command, const std::string &name, const std::string &valueName,
    std::int64_t &number, std::int64_t minimum, std::int64_t maximum, const std::string &description);

/// A wrong usage that only a command can notice.
class WrongUsage : public CLI::ParseError
{
public:
    explicit WrongUsage(const std::string &line) : ParseError("WrongUsage", line, 2) { }
};

/// The bytes of the serial number that an argument names: \xNN stands for any byte. Throws WrongUsage.
std::string serialFrom(const std::string &argument);

/// Throws WrongUsage when the version cannot stand in an image.
void checkVersion(const std::string &version);

/// Prints on standard output.
void print(const std::string &text);

/// Runs `work`; what it is refused is refused as "cannot <action>: <reason>".
void attempt(const std::string &action, const std::function<void()> &work);

} // namespace bench
