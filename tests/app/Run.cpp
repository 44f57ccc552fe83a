#include "tests/app/Run.h"

#include <QElapsedTimer>
#include <QProcess>

Run::Run(const QString &program, const QStringList &arguments, const QStringList &environment)
{
    QProcess process;
    process.setEnvironment(QProcess::systemEnvironment() + environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QElapsedTimer sinceStart;
    sinceStart.start();
    QElapsedTimer sinceLastLine;
    sinceLastLine.start();
    process.start(program, arguments);
    QByteArray bytes;
    while (process.waitForReadyRead()) {
        bytes += process.readAllStandardOutput();
        sinceLastLine.start();
    }
    ended = process.state() == QProcess::NotRunning || process.waitForFinished();
    milliseconds = sinceStart.elapsed();
    endingMilliseconds = sinceLastLine.elapsed();
    crashed = process.exitStatus() == QProcess::CrashExit;
    exitCode = process.exitCode();
    output = QString::fromUtf8(bytes + process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
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
