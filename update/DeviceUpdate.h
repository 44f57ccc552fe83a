// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <string>

/// Where the drive's firmware image is looked for: in the directory of `executablePath`, the path of the
/// program's executable; a path without a slash means the working directory. Paths are bytes as the operating
/// system takes them; whether the file exists is not looked at. Any thread may call.
std::string imagePath(const DeviceInfo &device, const std::string &executablePath);

/// True when the name of the drive's image is the name of a file in that directory: it has no slash and no
/// zero byte. Any thread may call.
bool hasImageName(const DeviceInfo &device);

/// Flashes the drive with its image and, behind a USB bridge, unmounts its volumes. True when all of that
/// succeeded; false for everything else, without a reason. Blocks the calling thread, on which the libraries
/// are used, until the flash is over; it cannot be interrupted.
bool updateDevice(const DeviceInfo &device, const std::string &executablePath);
