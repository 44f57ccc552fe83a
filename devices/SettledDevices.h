// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QDeadlineTimer>

#include <vector>

class DeviceDiscovery;

/// True when the library has determined both statuses of the drive. Any thread may call.
bool isSettled(const DeviceInfo &device);

/**
 * Replaces the contents of `devices` by the attached drives, as `discovery` reports them.
 *
 * Asks again every half second until every drive in the latest answer is settled, however long the library
 * takes. Once the deadline has passed it does not ask again, and `devices` may hold drives that are not
 * settled. Called on the thread that owns `discovery`, which it blocks.
 */
void findSettledDevices(DeviceDiscovery &discovery, std::vector<DeviceInfo> &devices,
    QDeadlineTimer deadline = QDeadlineTimer(QDeadlineTimer::Forever));
