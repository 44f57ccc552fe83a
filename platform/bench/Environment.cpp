// What the process needs before main: the stand-ins for the host's tools on PATH, the directory of the bench,
// and a windowing system in which the window appears.

#include "bench/core/Files.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace {

void prepareBench()
{
    ::setenv("TARVO_BENCH", bench::benchDirectory().c_str(), 1);
    const std::string tools = bench::executableDirectory() + "/host-tools";
    std::error_code error;
    if (std::filesystem::is_directory(tools, error)) {
        const char *const path = std::getenv("PATH");
        const std::string extended = tools + ':' + (path == nullptr ? "/usr/bin:/bin" : path);
        ::setenv("PATH", extended.c_str(), 1);
    }
}

#ifdef __linux__
bool isSet(const char *variable)
{
    const char *const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// True when an option of Qt's names the windowing system.
bool hasPlatformOption()
{
    std::ifstream arguments("/proc/self/cmdline", std::ios::binary);
    for (std::string argument; std::getline(arguments, argument, '\0');) {
        if (argument == "-platform" || argument == "--platform") {
            return true;
        }
    }
    return false;
}

/// Takes X11 unless the person has chosen. For Wayland, Qt would look for a further plug-in after the program
/// has emptied the library paths, and the window would never appear.
void chooseWindowingSystem()
{
    if (isSet("QT_QPA_PLATFORM") || hasPlatformOption()) {
        return;
    }
    if (!isSet("DISPLAY")) {
        std::fprintf(stderr, "tarvo-firmware-updater: %s\n",
            isSet("WAYLAND_DISPLAY")
                ? "its window needs X11, and this Wayland session has none: install Xwayland, or set DISPLAY"
                : "there is no display to open the window on: set DISPLAY");
        std::_Exit(1);
    }
    ::setenv("QT_QPA_PLATFORM", "xcb", 1);
}
#else
void chooseWindowingSystem() { }
#endif

const bool isPrepared = [] {
    prepareBench();
    chooseWindowingSystem();
    return true;
}();

} // namespace
