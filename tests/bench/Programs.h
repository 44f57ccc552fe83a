#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What a program printed and how it ended.
struct Ended
{
    int status; ///< exit status; -1 when it was killed or did not end within 20 seconds
    QByteArray output;
    QByteArray errors;
};

/// Runs a program with these arguments on the bench in `benchFolder`.
Ended runProgram(const QString &program, const QStringList &arguments, const QString &benchFolder);

/// Runs drive-bench.
Ended driveBench(const QStringList &arguments, const QString &benchFolder);

/// Path of drive-bench, and of the folder with the stand-ins for the host's tools.
QString driveBenchPath();
QString hostToolFolder();
