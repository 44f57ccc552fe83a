#pragma once

#include "bench/core/BenchStore.h"

#include <QString>

#include <functional>
#include <string>

namespace bench {

/// Runs `work` on the bench in that directory. Returns what was refused and why; empty when nothing was.
///
/// The bench is opened anew each time: another one may have taken its place since.
QString onBench(const std::string &directory, const std::function<void(BenchStore &store)> &work);

} // namespace bench
