#include "bench/core/Files.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace {

/// Puts the stand-ins for the host's tools in front of the real ones, for the shell commands that the program
/// runs, and tells them where the bench is. Runs before main.
const bool isEnvironmentSet = [] {
    ::setenv("TARVO_BENCH", bench::benchDirectory().c_str(), 1);
    const std::string tools = bench::executableDirectory() + "/host-tools";
    std::error_code error;
    if (std::filesystem::is_directory(tools, error)) {
        const char *const path = std::getenv("PATH");
        const std::string extended = tools + ':' + (path == nullptr ? "/usr/bin:/bin" : path);
        ::setenv("PATH", extended.c_str(), 1);
    }
    return true;
}();

} // namespace
