#pragma once

#include "bench/core/Bench.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

namespace bench {

/// What an argument of a command names: decides what is offered for completion.
enum class Argument { Serial, Model, FaultName, FaultOfDrive, FaultValue, File };

/// An option of a command.
struct Option
{
    QString name; ///< "--rate"
    QString value; ///< what its value is called; empty for a switch
    QString description;
    qint64 minimum = 0; ///< limits of a value that is a whole number; both 0 for any text
    qint64 maximum = 0;
};

class CommandLine;

/// One command of drive-bench.
struct Command
{
    QString name; ///< one or two words: "plug", "image build"
    QString usage; ///< its arguments as its help shows them
    QString summary; ///< half a line, for the list of commands
    QString details; ///< what else there is to know; may be empty
    QString example; ///< a whole command line
    QVector<Argument> arguments; ///< the last one is repeated for any further argument
    int minimum; ///< number of arguments
    int maximum;
    QVector<Option> options; ///< without --bench and --help, which every command has
    int (*run)(const CommandLine &line);
};

/// A parsed command line, as a command gets it.
class CommandLine
{
public:
    Bench bench() const;
    QString benchFolder() const;
    QStringList arguments() const { return given; }
    QString argument(int index) const { return given.value(index); }
    bool has(const char *option) const { return options.contains(QLatin1String(option)); }
    QString value(const char *option) const { return options.value(QLatin1String(option)); }
    /// The value of an option that is a number, which was checked against its limits.
    qint64 number(const char *option, qint64 otherwise) const;

    /// Runs what the arguments say. Returns the exit status: 0, 1 when it was refused, 2 for a wrong usage.
    static int run(const QVector<Command> &commands, const QStringList &arguments);

    /// What may stand in the place of the last of the words, one candidate a line.
    static QStringList complete(const QVector<Command> &commands, const QStringList &words);

private:
    QStringList given;
    QHash<QString, QString> options;
};

/// Prints "drive-bench: " and the line on standard error. Returns 1, the exit status of what was refused.
int refuse(const QString &line);

/// As refuse(), with a hint at the command's help. Returns 2.
int wrongUsage(const QString &line, const QString &command);

/// Prints on standard output.
void print(const QString &text);

/// Prints lines about malformed files on standard error.
void printProblems(const QStringList &problems);

} // namespace bench
