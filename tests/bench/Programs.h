// SPDX-License-Identifier: MIT
#pragma once

#include "tests/bench/TemporaryBench.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <string>

/// What a program printed and how it ended.
struct Ended
{
    int status; ///< exit status; -1 when it was killed or did not end within 20 seconds
    QByteArray output;
    QByteArray errors;
};

/// Runs a program with these arguments on the bench in that directory.
Ended runProgram(
    const QString &program, const QStringList &arguments, const std::string &benchDirectory = "/nowhere");

/// Runs drive-bench with the words of the line, or with these arguments.
Ended driveBench(const QString &line, const std::string &benchDirectory = "/nowhere");
Ended driveBench(const QStringList &arguments, const std::string &benchDirectory = "/nowhere");

/// Runs shell commands with the stand-ins for the host's tools first on PATH.
Ended shell(const QString &commands, const std::string &benchDirectory);
inline Ended shell(const QString &commands, const TemporaryBench &bench)
{
    return shell(commands, bench.directory());
}

/// Path of drive-bench, and of the directory with the stand-ins for the host's tools.
QString driveBenchPath();
QString hostToolDirectory();
