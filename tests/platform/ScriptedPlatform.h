// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QStringList>

#include <vector>

/**
 * A second implementation of the declarations of platform/: it answers as a test tells it to and
 * remembers every call. All functions may be called from any thread.
 */
namespace ScriptedPlatform {

using DeviceList = std::vector<DeviceInfo>;

/// Back to no drives, flashes and unmounts that succeed, nothing held, no calls remembered; nor are those
/// that library objects from before make from now on.
void reset();

/// Every query from now on finds these drives.
void attach(const DeviceList &devices);
/// The next queries find these lists, one a query; the last one is found from then on.
void attachInTurn(const std::vector<DeviceList> &answers);
/// Queries from now on do not return before releaseQueries().
void holdQueries();
void releaseQueries();
/// Queries from now on throw.
void throwFromQueries();

void setFlashResult(bool result);
void setUnmountResult(int result);
/// Flashes from now on do not return before releaseFlashes().
void holdFlashes();
void releaseFlashes();
/// Flashes from now on throw.
void throwFromFlashes();

/// What was called, in order, as "updateDevice(/path/image.tfw)", "~Asm1051()" and the like. A query is
/// remembered as "getTarvoDevice(N)" with the N records that the vector held on entry.
QStringList calls();
/// How often a call with this beginning was made.
int count(const QString &beginning);
/// Milliseconds between each query and the one before it, from the second query on.
QList<qint64> queryIntervals();

} // namespace ScriptedPlatform
