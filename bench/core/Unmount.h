#pragma once

#include "bench/core/BenchStore.h"

#include <string>

namespace bench {

/// What became of an attempt to unmount the volumes of a drive.
struct Unmount
{
    int value; ///< what the maker's library returns
    std::string reason; ///< why a flash that had succeeded is now a failed update; empty otherwise
};

/// Unmounts the volumes of the drive that goes by this serial number.
Unmount unmount(BenchStore &store, const std::string &reportedSerial);

} // namespace bench
