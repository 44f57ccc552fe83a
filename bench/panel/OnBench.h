#pragma once

#include "bench/core/Store.h"

#include <QString>

#include <functional>
#include <string>

namespace bench {

/// Runs `work` on the bench in that directory, which is opened anew each time: another one may have taken its
/// place since. Returns what was refused and why; empty when nothing was.
QString onBench(const std::string &directory, const std::function<void(Store &store)> &work);

/// Likewise for one of its drives; what is refused is "cannot <action> <drive>: <reason>".
QString onDrive(const std::string &directory, const std::string &serial, const std::string &action,
    const std::function<void(Store &store, const std::string &serial)> &work);

/// The text of a drive as one line of ASCII.
QString shownText(const std::string &text);

} // namespace bench
