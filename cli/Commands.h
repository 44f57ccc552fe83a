#pragma once

#include <QStringList>

/// What the process ends with.
enum ExitStatus {
    Done = 0, ///< everything asked for is up to date or done
    Failed = 1, ///< an update failed or was not begun, or something could not be found out
    WrongUse = 2, ///< the arguments are wrong, or name a drive that is not there or cannot be updated
    ToBeRestarted = 3, ///< everything is written, and a drive is still to be restarted
    CompanionInstalled = 4, ///< refused because the companion product is installed
};

// The commands. Each gets the arguments after its name and returns an exit status; main thread only.

int listDrives(const QStringList &arguments);
int updateDrives(const QStringList &arguments);
int reportOnDrives(const QStringList &arguments);
