#pragma once

#include "bench/core/BenchStore.h"

#include <string>
#include <vector>

namespace bench {

/// What a stand-in returns for a call that it does not answer: the real tool is to be called.
constexpr int NotMine = -1;

/// Answers on the standard output for the tool whose name is the first word. The exit status, or NotMine;
/// without a bench (`store` is null) the answers are those of a host without the companion product. Throws
/// Refused.
int runHostTool(BenchStore *store, const std::vector<std::string> &words);

} // namespace bench
