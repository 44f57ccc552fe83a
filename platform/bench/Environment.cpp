// SPDX-License-Identifier: MIT
// What the process needs before main: the stand-ins for the host's tools on PATH and the directory of the
// bench.

#include "bench/core/Files.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

void prepareBench()
{
    std::error_code error;
    // Absolute: a program may run a stand-in in another directory than its own.
    ::setenv("TARVO_BENCH", std::filesystem::absolute(bench::benchDirectory(), error).c_str(), 1);
    const std::string tools = bench::executableDirectory() + "/host-tools";
    if (std::filesystem::is_directory(tools, error)) {
        if (tools.find(':') != std::string::npos) {
            // The person's own tools would be run instead.
            std::fprintf(stderr,
                "%s: PATH cannot name this directory of stand-in tools because of its colon\n",
                tools.c_str());
            std::_Exit(1);
        }
        const char *const path = std::getenv("PATH");
        const std::string extended = tools + ':' + (path == nullptr ? "/usr/bin:/bin" : path);
        ::setenv("PATH", extended.c_str(), 1);
    }
}

const bool isPrepared = [] {
    prepareBench();
    return true;
}();

} // namespace
