#pragma once

#include "bench/core/Drive.h"
#include "devices/DeviceInfo.h"

#include <QString>

#include <string>
#include <vector>

/// What the panel says of a drive.
namespace bench {

/// Bytes of a drive as one line.
QString shown(const std::string &bytes);

QString versionsText(const std::string &firmware, const std::string &configuration);

/// What the drive needs or does, given what discovery reports of it; empty for one that is unplugged.
QString stateText(const Drive &drive, const DeviceInfo &record);

/// The faults that are set; empty when there are none.
QString faultsText(const std::vector<Fault> &faults);

} // namespace bench
