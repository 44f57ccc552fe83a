#pragma once

#include "bench/core/BenchStore.h"
#include "bench/core/Drive.h"
#include "bench/core/FlashChip.h"
#include "bench/core/Host.h"

#include <string>
#include <utility>
#include <vector>

namespace bench {

/// A whole bench outside its database, but for the processes of its companion.
struct BenchDocument
{
    std::vector<std::pair<Drive, FlashChip>> drives;
    HostState host;
    std::vector<std::string> calls;
};

/// The bench as JSON, which docs/drive-bench.md describes.
std::string exportBench(BenchStore &store);

/// Reads such a JSON text. Refused with "name:line:column: reason" when it is no JSON, and with "name:
/// pointer: reason" when something in it is not as it must be.
BenchDocument parseBench(const std::string &text, const std::string &name);

/// Puts everything in the document on an empty bench.
void fillBench(BenchStore &store, const BenchDocument &document);

} // namespace bench
