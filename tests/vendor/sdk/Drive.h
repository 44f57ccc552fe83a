// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

/// The SDK's one drive: the directory that $TARVO_SDK_DRIVE names. The drive is attached as long as the file
/// "attached" is there, "flash" is what was written into it, "calls" what was done to it, one line each.
inline std::filesystem::path drivePath(const char *file)
{
    const char *const directory = std::getenv("TARVO_SDK_DRIVE");
    return std::filesystem::path(directory == nullptr ? "." : directory) / file;
}

inline void recordCall(const std::string &line)
{
    std::ofstream(drivePath("calls"), std::ios::app) << line + '\n' << std::flush;
}
