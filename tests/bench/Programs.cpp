#include "tests/bench/Programs.h"

#include <QProcess>
#include <QProcessEnvironment>

Ended runProgram(const QString &program, const QStringList &arguments, const QString &benchFolder)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TARVO_BENCH", benchFolder);
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    const bool ended = process.waitForFinished(20000) && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

Ended driveBench(const QStringList &arguments, const QString &benchFolder)
{
    return runProgram(driveBenchPath(), arguments, benchFolder);
}

QString driveBenchPath()
{
    return QStringLiteral(DRIVE_BENCH);
}

QString hostToolFolder()
{
    return QStringLiteral(HOST_TOOL_FOLDER);
}
