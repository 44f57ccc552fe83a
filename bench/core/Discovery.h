// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Store.h"
#include "devices/DeviceInfo.h"

#include <string>
#include <vector>

/// What the maker's discovery library reports of the drives of a bench. The texts of the records are bytes.
/// `imageDirectory`: where the firmware images lie that decide what is up to date, unless the bench has its
/// own.
namespace bench {

/// One query: a record for each drive that is plugged in and answers. Counts as a query, uses up faults that
/// are set for once, and takes the time that slow probes take: the calling thread sleeps.
std::vector<DeviceInfo> query(Store &store, const std::string &imageDirectory);

/// What discovery would report of each of these drives now, plugged in or not, without counting as a query.
std::vector<DeviceInfo> records(
    const std::vector<Drive> &drives, const std::string &benchDirectory, const std::string &imageDirectory);

} // namespace bench
