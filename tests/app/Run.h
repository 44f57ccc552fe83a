// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// One run of a program, from its start to its end; one that does not end is killed.
class Run
{
public:
    Run(const QString &program, const QStringList &arguments, const QStringList &environment);

    /// What is wrong with the end of a run that should have ended with that exit status; empty when nothing
    /// is.
    QString fault(int expectedExitCode = 0) const;

    bool ended = false;
    bool crashed = false;
    int exitCode = -1;
    QStringList output; ///< the lines on standard output
};
