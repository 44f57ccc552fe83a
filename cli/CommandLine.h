#pragma once

#include "cli/Commands.h"

#include <QDeadlineTimer>
#include <QString>

#include <optional>

class QCommandLineParser;

/// Prints the line on standard error, after the program's name, and returns the status.
int refuse(const QString &line, ExitStatus status);

/// Reads the arguments of a command. Nothing when it is to run; otherwise all has been said, help or what is
/// wrong, and the process is to end with the status.
std::optional<int> readArguments(QCommandLineParser &parser, const QString &command,
    const QStringList &arguments, const QString &examples);

/// The end of a wait that begins now; nothing where the text is no whole number from 0 to 86400.
std::optional<QDeadlineTimer> deadlineFrom(const QString &seconds);
