// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Store.h"

#include <string>
#include <vector>

namespace bench {

/// A whole bench outside its database.
struct BenchDocument
{
    HostState host;
    std::vector<Drive> drives;

    static constexpr std::size_t MaximumSize = 16 * 1024 * 1024; ///< bytes of its JSON
    static constexpr std::size_t MaximumDrives = 10000;
};

/// The bench as JSON, which docs/drive-bench.md describes.
Json exportBench(const Store &store);

/// Reads such a JSON text. Refused with "name:line:column: reason" when it is no JSON, and with "name:
/// pointer: reason" when something in it is not as it must be.
BenchDocument parseBench(const std::string &text, const std::string &name);

/// Puts everything in the document on an empty bench.
void fillBench(Store &store, const BenchDocument &document);

/// The JSON as a person reads it, in ASCII, with a line feed at its end.
std::string printed(const Json &json);

} // namespace bench
