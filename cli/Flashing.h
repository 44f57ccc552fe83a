// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QDeadlineTimer>

#include <vector>

class Progress;

/// What became of the drives of an update.
struct Flashed
{
    bool hasFailed = false; ///< one at least failed or was not begun
    std::vector<DeviceInfo> toRestart; ///< written, and to be restarted by a person
};

/// Flashes one drive after the other with the images beside the executable. Keeps the machine awake
/// meanwhile. After holdSignals(): once an end is requested, the drive that is being written is finished and
/// no other begun.
Flashed flash(const std::vector<DeviceInfo> &devices, Progress &progress);

/// Waits for drives to go away and come back, and tells whether they then run what was offered. After
/// holdSignals(). Returns an exit status: Done, Failed, or ToBeRestarted at the deadline and when an end is
/// requested.
int waitForRestarts(const std::vector<DeviceInfo> &devices, QDeadlineTimer deadline, Progress &progress);
