// SPDX-License-Identifier: MIT
// Stands in for the tools of the host's operating system that the running program calls. The name by which it
// is called says for which; what it does not answer it hands on to the real tool.

#include "bench/core/Files.h"
#include "bench/core/Host.h"
#include "bench/core/Refused.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>

#include <unistd.h>

namespace {

using Words = std::vector<std::string>;

/// Set to its process ID by a stand-in that becomes the real tool.
constexpr const char *Handed = "TARVO_HOST_TOOL";

/// False where there is no bench that can be read.
bool hasCompanion()
{
    try {
        return bench::isCompanionInstalled(bench::Store(bench::benchDirectory()));
    } catch (const bench::Refused &) {
        return false;
    }
}

/// Answers the call. The exit status; nothing for a call that is the real tool's.
std::optional<int> answer(const Words &words)
{
    if (words.front() == "sudo" && words.size() > 1) {
        return answer({words.begin() + 1, words.end()});
    }
    if (words == Words{"ls", "/Library/LaunchDaemons"}) {
        std::puts("com.apple.remotepairtool.plist");
        if (hasCompanion()) {
            std::puts("com.tarvo.quaydesk.service.plist");
        }
        return 0;
    }
    const bool isSubmission = words.size() > 3 && words[0] == "launchctl" && words[1] == "submit"
        && words[3] == "com.tarvo.quaydesk.service";
    return isSubmission ? std::optional(0) : std::nullopt;
}

/// Becomes the first tool of that name on PATH that does not lie beside the stand-ins. Returns only when
/// there is none.
void becomeRealTool(const std::string &name, char **argv)
{
    ::setenv(Handed, std::to_string(::getpid()).c_str(), 1);
    const char *const path = std::getenv("PATH");
    std::istringstream directories(path == nullptr ? "/usr/bin:/bin" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        std::error_code error;
        const bool isOwn = std::filesystem::equivalent(directory, bench::executableDirectory(), error);
        const std::string tool = directory.append(directory.empty() ? "./" : "/").append(name);
        if (!isOwn && !std::filesystem::is_directory(tool, error)) {
            ::execv(tool.c_str(), argv);
        }
    }
}

/// True when another stand-in has become this one in search of the real tool: there is none.
bool isHandedOn()
{
    const char *const process = std::getenv(Handed);
    return process != nullptr && process == std::to_string(::getpid());
}

} // namespace

int main(int argc, char **argv)
{
    Words words(argv, argv + argc);
    std::string &name = words.front();
    name = name.substr(name.rfind('/') + 1);
    if (name == "host-tool") {
        std::fprintf(stderr, "host-tool is called by the names of the tools that it stands in for\n");
        return 2;
    }
    if (!isHandedOn()) {
        bench::logCall(bench::benchDirectory(), words);
        if (const std::optional<int> status = answer(words)) {
            return *status;
        }
        becomeRealTool(name, argv);
    }
    std::fprintf(stderr, "%s: command not found\n", name.c_str());
    return 127;
}
