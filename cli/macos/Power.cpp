// SPDX-License-Identifier: MIT
#include "cli/Power.h"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>

WakeLock::WakeLock()
{
    const QString self = QString::number(QCoreApplication::applicationPid());
    // Detached, so that Ctrl-C does not end it; it ends with this program at the latest.
    if (!QProcess::startDetached("caffeinate", {"-ims", "-w", self}, QString(), &held)) {
        problem = "caffeinate does not start";
    }
}

WakeLock::~WakeLock()
{
    if (held > 0) {
        ::kill(pid_t(held), SIGTERM);
    }
}

std::optional<double> batteryCharge()
{
    return std::nullopt;
}
