// SPDX-License-Identifier: MIT
#include "cli/CompanionCheck.h"

#include "companion/QDKUtilities.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>

namespace {

/// More than any listing that the check writes there.
constexpr int Room = 1 << 20;

bool hasRoom()
{
    QFile probe("probe");
    return probe.open(QFile::WriteOnly) && probe.write(QByteArray(Room, ' ')) == Room && probe.flush()
        && probe.remove();
}

std::optional<bool> checkInPrivateDirectory()
{
    const QTemporaryDir directory(QDir::tempPath() + "/tarvo-firmware-XXXXXX");
    const QString previous = QDir::currentPath();
    if (!directory.isValid() || !QDir::setCurrent(directory.path())) {
        return std::nullopt;
    }
    std::optional<bool> answer;
    if (hasRoom()) {
        answer = QDKUtilities::isQDKInstalled();
    }
    QDir::setCurrent(previous);
    return answer;
}

} // namespace

std::optional<bool> isCompanionInstalled()
{
    // Held back in the shell too: a listing cut short by Ctrl-C would read as "not installed".
    sigset_t held;
    sigset_t previous;
    sigemptyset(&held);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        sigaddset(&held, signal);
    }
    pthread_sigmask(SIG_BLOCK, &held, &previous);
    const std::optional<bool> answer = checkInPrivateDirectory();
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return answer;
}
