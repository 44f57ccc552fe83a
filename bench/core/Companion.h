#pragma once

#include "bench/core/Bench.h"

#include <QString>

namespace bench {

/**
 * The companion product on the host of a bench: its installation, and processes that stand for its
 * applications and its service.
 *
 * Functions return false when they are refused and then say in `reason`, in one line, what was refused, why,
 * and what would work. Any process may call them, on any thread.
 */
class Companion
{
public:
    explicit Companion(const QString &benchFolder);

    bool install(QString *reason);
    /// Stops it first.
    bool uninstall(QString *reason);
    /// Starts its processes: `tool` is the path of the host-tool executable.
    bool start(const QString &tool, QString *reason);
    bool stop(QString *reason);

    /// Starts one process in the place of `command` and waits until the host lists it.
    bool startProcess(const QString &tool, const QString &command, QString *reason);
    /// Makes the calling process stand for `command`: it is listed, and this returns when the process is to
    /// end because it was taken off the list or the bench is gone.
    void runAsProcess(const QString &command);

private:
    void removeStaleFiles();

    Bench bench;
};

} // namespace bench
