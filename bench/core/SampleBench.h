#pragma once

#include "bench/core/Drive.h"

#include <vector>

namespace bench {

/// The six drives of a sample bench: one for each thing that a person can meet.
std::vector<Drive> sampleDrives();

/// A drive of that model, up to date, plugged in.
Drive newDrive(const Model &model);

} // namespace bench
