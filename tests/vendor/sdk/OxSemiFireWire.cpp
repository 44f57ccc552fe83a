// SPDX-License-Identifier: MIT
#include <OxSemiFireWire.h>

#include "tests/vendor/sdk/Drive.h"

#include <utility>

OxSemiFireWire::OxSemiFireWire(std::string serialNumber) : serialNumber(std::move(serialNumber)) { }

OxSemiFireWire::~OxSemiFireWire() = default;

bool OxSemiFireWire::updateDevice(const std::string &, int retries)
{
    generation += retries;
    return false;
}
