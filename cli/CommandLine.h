// SPDX-License-Identifier: MIT
#pragma once

#include <QDeadlineTimer>
#include <QString>
#include <QStringList>

#include <optional>

class QCommandLineParser;

/// What the process ends with.
enum ExitStatus {
    Done = 0, ///< everything asked for is up to date or done
    Failed = 1, ///< an update failed or was not begun, or something could not be found out
    WrongUse = 2, ///< the arguments are wrong, or name a drive that is not there or cannot be updated
    ToBeRestarted = 3, ///< everything is written, and a drive is still to be restarted
    CompanionInstalled = 4, ///< refused because the companion product is installed
};

// The commands, each in a file of its name. Each gets the arguments after its name and returns an exit
// status; main thread only.

int listDrives(const QStringList &arguments);
int updateDrives(const QStringList &arguments);
int reportOnDrives(const QStringList &arguments);

/// Prints the line on standard error, after the program's name, and returns the status.
int refuse(const QString &line, ExitStatus status);

/// Reads the arguments of a command, --help and --timeout among them. Nothing when it is to run; otherwise
/// all has been said, help or what is wrong, and the process is to end with the status.
std::optional<int> readArguments(QCommandLineParser &parser, const QString &command,
    const QStringList &arguments, const QString &examples);

/// The end of a wait that begins now, for an option that is a whole number of seconds, at most a day.
QDeadlineTimer deadline(const QCommandLineParser &parser, const QString &option);
