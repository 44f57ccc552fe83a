// SPDX-License-Identifier: MIT
#include "tests/bench/Programs.h"

#include <QProcess>
#include <QProcessEnvironment>

Ended runProgram(const QString &program, const QStringList &arguments, const std::string &benchDirectory)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TARVO_BENCH", QString::fromStdString(benchDirectory));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    const bool ended = process.waitForFinished(20000) && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

Ended driveBench(const QString &line, const std::string &benchDirectory)
{
    return driveBench(line.split(' '), benchDirectory);
}

Ended driveBench(const QStringList &arguments, const std::string &benchDirectory)
{
    return runProgram(driveBenchPath(), arguments, benchDirectory);
}

Ended shell(const QString &commands, const std::string &benchDirectory)
{
    return runProgram("sh", {"-c", "PATH=\"$0:$PATH\"; " + commands, hostToolDirectory()}, benchDirectory);
}

QString driveBenchPath()
{
    return QStringLiteral(DRIVE_BENCH);
}

QString hostToolDirectory()
{
    return QStringLiteral(HOST_TOOL_DIRECTORY);
}
