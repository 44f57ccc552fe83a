// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Store.h"

#include <string>
#include <vector>

/// The host computer of a bench: the companion product on it, and the calls of its tools.
namespace bench {

bool isCompanionInstalled(const Store &store);
/// Installs or removes the companion product; refused when that is done already.
void setCompanionInstalled(Store &store, bool isInstalled);

/// Adds a call of a host tool, with its arguments, to the file "calls.log" of the bench: one line, quoted as
/// a shell would need it. A file that cannot be written, or is no regular file, gets none.
void logCall(const std::string &benchDirectory, const std::vector<std::string> &words);

} // namespace bench
