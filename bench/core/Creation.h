// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Store.h"

#include <functional>
#include <string>

namespace bench {

/// Makes a bench in that directory, with the directories above it, that holds what `fill` puts there. Refused
/// for a directory that holds other files and, unless `replace` is set, for one that holds a bench. What is
/// replaced gives way atomically; what is refused leaves what was there as it was. Of several processes that
/// make a bench in one directory at once, one does, and the others find it.
void createBench(const std::string &directory, bool replace, const std::function<void(Store &store)> &fill);

} // namespace bench
