#include "cli/Power.h"

#include <QCoreApplication>
#include <QProcess>

/// The machine is kept awake as long as this runs, which ends with this process at the latest.
struct WakeLock::Held
{
    QProcess caffeinate;
};

WakeLock::WakeLock() : held(new Held)
{
    held->caffeinate.start(
        "caffeinate", {"-i", "-m", "-s", "-w", QString::number(QCoreApplication::applicationPid())});
    if (!held->caffeinate.waitForStarted()) {
        problem = held->caffeinate.errorString();
    }
}

WakeLock::~WakeLock()
{
    held->caffeinate.kill();
    held->caffeinate.waitForFinished();
}

std::optional<double> batteryCharge()
{
    return std::nullopt;
}
