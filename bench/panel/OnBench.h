// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Refused.h"
#include "bench/core/Store.h"
#include "bench/core/Text.h"

#include <QString>

#include <string>

namespace bench {

/// Runs `work`, which takes the store, on the bench in that directory, which is opened anew each time:
/// another one may have taken its place since. Returns what was refused and why; empty when nothing was.
template <typename Work>
QString onBench(const std::string &directory, const Work &work)
{
    try {
        Store store(directory);
        work(store);
    } catch (const Refused &refused) {
        return QString::fromUtf8(refused.what());
    }
    return {};
}

/// Runs `work`, which takes the store and the serial number, likewise on one of the drives. What is refused
/// is "cannot <action> <drive>: <reason>".
template <typename Work>
QString onDrive(
    const std::string &directory, const std::string &serial, const std::string &action, const Work &work)
{
    return onBench(directory, [&](Store &store) {
        attempt("cannot " + action + ' ' + escaped(serial), [&] { work(store, serial); });
    });
}

/// The text of a drive as one line of ASCII.
inline QString shownText(const std::string &text)
{
    return QString::fromStdString(escaped(text));
}

} // namespace bench
