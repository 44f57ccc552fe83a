// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Faults.h"
#include "devices/DeviceInfo.h"

#include <string>

/// What discovery reports of a drive: the twelve fields of the record by their names.
namespace bench {

/// The names of all fields, separated by commas.
std::string recordFieldNames();

/// The record as an object; its bytes are texts.
Json toJson(const DeviceInfo &record);

/// Sets the field that a report names. Refused when it is none, or its value does not fit into it.
void apply(const Fault &report, DeviceInfo *record);

} // namespace bench
