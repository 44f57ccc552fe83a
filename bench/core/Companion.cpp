#include "bench/core/Companion.h"

#include "bench/core/Files.h"

#include <QDir>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include <unistd.h>

namespace bench {

Companion::Companion(const QString &benchFolder) : bench(benchFolder, QString()) { }

bool Companion::install(QString *reason)
{
    return bench.changeHost(
        [](Host *host, QString *why) {
            if (host->companionInstalled) {
                *why = QStringLiteral(
                    "the companion is installed already; to remove it, use: drive-bench companion uninstall");
                return false;
            }
            host->companionInstalled = true;
            host->extensionInstalled = true;
            return true;
        },
        reason);
}

bool Companion::uninstall(QString *reason)
{
    QStringList problems;
    if (!bench.exists(reason)) {
        return false;
    }
    const Host found = bench.host(&problems);
    if (problems.isEmpty() && !found.companionInstalled) {
        *reason = QStringLiteral(
            "the companion is not installed; to install it, use: drive-bench companion install");
        return false;
    }
    if (!found.processes.isEmpty() && !stop(reason)) {
        return false;
    }
    const bool done = bench.changeHost(
        [](Host *host, QString *) {
            host->companionInstalled = false;
            host->serviceSubmitted = false;
            host->extensionInstalled = false;
            host->extensionLoaded = false;
            return true;
        },
        reason);
    if (done) {
        removeStaleFiles();
    }
    return done;
}

bool Companion::start(const QString &tool, QString *reason)
{
    const auto prepare = [&tool](Host *host, QString *why) {
        if (!host->companionInstalled) {
            *why = QStringLiteral("the companion is not installed; first use: drive-bench companion install");
            return false;
        }
        if (!host->processes.isEmpty()) {
            *why = QStringLiteral(
                "the companion is running already; to stop it, use: drive-bench companion stop");
            return false;
        }
        if (::access(tool.toUtf8().constData(), X_OK) != 0) {
            *why =
                QStringLiteral("cannot start %1: %2; it must lie in the folder host-tools beside drive-bench")
                    .arg(tool, systemReason());
            return false;
        }
        host->serviceSubmitted = true;
        host->extensionLoaded = true;
        return true;
    };
    const QString application = QStringLiteral("/Applications/Tarvo Quaydesk.app/Contents/MacOS/");
    if (!bench.changeHost(prepare, reason)) {
        return false;
    }
    removeStaleFiles();
    return startProcess(tool, application + QStringLiteral("Tarvo Quaydesk"), reason)
        && startProcess(
            tool, application + QStringLiteral("QDKStatusItem.app/Contents/MacOS/QDKStatusItem"), reason)
        && startProcess(
            tool, QStringLiteral("/Library/Application Support/Tarvo/Quaydesk/tarvo_qd_service"), reason);
}

bool Companion::stop(QString *reason)
{
    QVector<Process> stopped;
    const bool done = bench.changeHost(
        [&stopped](Host *host, QString *why) {
            if (host->processes.isEmpty()) {
                *why = QStringLiteral(
                    "the companion is not running; to start it, use: drive-bench companion start");
                return false;
            }
            stopped = host->processes;
            host->processes.clear();
            host->serviceSubmitted = false;
            host->extensionLoaded = false;
            return true;
        },
        reason);
    for (const Process &process : stopped) {
        // A process that holds its file is the one that the bench started, and no later one with its number.
        if (isLocked(bench.processFile(process.id))) {
            ::kill(static_cast<pid_t>(process.id), SIGTERM);
        }
        QString ignored;
        removeFile(bench.processFile(process.id), &ignored);
    }
    return done;
}

bool Companion::startProcess(const QString &tool, const QString &command, QString *reason)
{
    qint64 id = 0;
    const QStringList arguments{QStringLiteral("--process"), QDir(bench.folder()).absolutePath(), command};
    if (!QProcess::startDetached(tool, arguments, QStringLiteral("/"), &id)) {
        *reason = QStringLiteral("cannot start %1; it must be an executable file").arg(tool);
        return false;
    }
    for (int attempt = 0; attempt < 500; ++attempt) {
        QStringList ignored;
        for (const Process &process : bench.host(&ignored).processes) {
            if (process.id == id) {
                return true;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    *reason = QStringLiteral("%1 did not come up within 5 seconds").arg(command);
    return false;
}

/// Removes the files of processes that were killed.
void Companion::removeStaleFiles()
{
    QStringList names;
    QString ignored;
    listFolder(bench.folder(), &names, &ignored);
    for (const QString &name : names) {
        const QString file = bench.folder() + QLatin1Char('/') + name;
        if (Bench::isProcessFile(name) && !isLocked(file)) {
            removeFile(file, &ignored);
        }
    }
}

void Companion::runAsProcess(const QString &command)
{
    const qint64 id = ::getpid();
    const QString file = bench.processFile(id);
    const FileLock lock(file, FileLock::Exclusive);
    QString reason;
    bench.changeHost(
        [&](Host *host, QString *) {
            host->processes.append({id, command});
            return true;
        },
        &reason);
    bool listed = lock.isHeld();
    while (listed) {
        QStringList ignored;
        const QVector<Process> processes = bench.host(&ignored).processes;
        listed = std::any_of(
            processes.begin(), processes.end(), [id](const Process &process) { return process.id == id; });
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    removeFile(file, &reason);
}

} // namespace bench
