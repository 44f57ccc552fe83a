// SPDX-License-Identifier: MIT
#include "tests/app/Run.h"

#include <QProcess>

Run::Run(const QString &program, const QStringList &arguments, const QStringList &environment)
{
    QProcess process;
    process.setEnvironment(QProcess::systemEnvironment() + environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    ended = process.waitForFinished();
    crashed = process.exitStatus() == QProcess::CrashExit;
    exitCode = process.exitCode();
    output = QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

QString Run::fault(int expectedExitCode) const
{
    if (!ended) {
        return "did not end; its output: " + output.join('|');
    }
    if (crashed) {
        return QString("ended by signal %1").arg(exitCode);
    }
    if (exitCode != expectedExitCode) {
        return QString("ended with status %1").arg(exitCode);
    }
    return {};
}
