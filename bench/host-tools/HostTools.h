#pragma once

#include "bench/core/BenchStore.h"

#include <string>
#include <vector>

namespace bench {

/// What a stand-in returns for arguments that it does not answer: the real tool is to be called.
constexpr int NotMine = -1;

/// Answers for the tool of that name on the standard output. The exit status, or NotMine; without a bench
/// (`store` is null) the answers are those of a host without the companion product. Throws Refused.
int runHostTool(BenchStore *store, const std::string &name, const std::vector<std::string> &arguments);

} // namespace bench
