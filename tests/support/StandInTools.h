// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/**
 * Stand-ins, first on PATH, for the command-line tools that the program runs, in a temporary folder that
 * is the working directory meanwhile. Each call is recorded; `sudo` runs the rest of its command line.
 * PATH and the working directory are put back on destruction.
 */
class StandInTools
{
public:
    StandInTools();
    ~StandInTools();
    StandInTools(const StandInTools &) = delete;
    StandInTools &operator=(const StandInTools &) = delete;

    /// What the command line, for example "ls /Library/LaunchDaemons", prints and exits with from now on.
    /// Without an answer a command prints nothing and exits with 0.
    void answer(const QString &commandLine, const QByteArray &output, int status = 0);
    /// Runs these shell commands in place of the tool from now on; the call is recorded all the same.
    void replace(const QString &tool, const QByteArray &commands);
    void installCompanion();

    /// The calls so far, in order; a call's words are separated by "|".
    QStringList calls() const;
    void forgetCalls();

    /// The working directory, without a slash at the end.
    QString path() const;

private:
    QTemporaryDir folder;
    QByteArray previousPath;
    QString previousFolder;
};
