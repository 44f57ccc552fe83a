// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// Keeps the machine from sleeping, shutting down and acting on its lid while it exists; a process that is
/// killed gives that back too. The functions here may wait some seconds for the system's services; main
/// thread.
class WakeLock
{
public:
    WakeLock();
    ~WakeLock();

    /// Why the machine is not kept awake; empty when it is.
    QString problem;

private:
    Q_DISABLE_COPY(WakeLock)

    qint64 held = -1; ///< the descriptor or the process that keeps it awake; negative for none
};

/// The charge in percent of the battery that the machine runs on; nothing when it runs on mains or does not
/// tell.
std::optional<double> batteryCharge();
