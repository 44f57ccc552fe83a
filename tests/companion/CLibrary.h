// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QStringList>

/**
 * The functions of the C library through which the companion is reached: system, fopen, fclose and remove. In
 * a program that contains these, each call is recorded byte by byte and then passed on. For the main thread
 * only.
 */
namespace CLibrary {

/// Forgets the calls; commands are run.
void reset();
/// Forgets the calls; commands from now on are only recorded. Their status is the one named here, else 0.
void withoutShell(const QHash<QByteArray, int> &statuses = {});
/// The calls so far, in order, as "system(COMMAND)", "fopen(PATH, MODE)", "fclose()" and "remove(PATH)".
QStringList calls();

} // namespace CLibrary
