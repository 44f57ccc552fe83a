// SPDX-License-Identifier: MIT
#pragma once

#include <QVector>

/**
 * The pauses of the program's threads. In a program that contains these, QThread's sleeps are recorded and
 * each one lasts until it is ended here. All functions may be called from any thread.
 */
namespace Pauses {

/// Forgets the pauses so far; the next ones last until they are ended.
void reset();
/// Microseconds of each pause that was begun, in order.
QVector<qulonglong> begun();
/// Ends that many pauses: the current one, and those that come as they begin.
void end(int count = 1);
/// Ends every pause, also those that come.
void endAll();

} // namespace Pauses
