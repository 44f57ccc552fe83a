#include "cli/Power.h"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>

/// The machine is kept awake as long as this process runs; it ends with this program at the latest.
struct WakeLock::Held
{
    qint64 caffeinate = 0;
};

WakeLock::WakeLock() : held(new Held)
{
    const QString self = QString::number(QCoreApplication::applicationPid());
    // Detached, so that Ctrl-C does not end it.
    if (!QProcess::startDetached("caffeinate", {"-ims", "-w", self}, QString(), &held->caffeinate)) {
        problem = "caffeinate does not start";
    }
}

WakeLock::~WakeLock()
{
    if (held->caffeinate > 0) {
        ::kill(pid_t(held->caffeinate), SIGTERM);
    }
}

std::optional<double> batteryCharge()
{
    return std::nullopt;
}
