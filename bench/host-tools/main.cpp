// Stands in for tools of the host's operating system. The name by which it is called says for which.

#include "bench/core/Companion.h"
#include "bench/core/Files.h"
#include "bench/core/Host.h"
#include "bench/core/Refused.h"
#include "bench/host-tools/HostTools.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>

#include <unistd.h>

namespace {

/// False when the bench refuses the work.
template <typename Work>
bool attempt(const Work &work)
{
    try {
        work();
        return true;
    } catch (const bench::Refused &) {
        return false;
    }
}

/// Becomes a process of its own that nobody waits for, and stands for a program of the companion product.
int becomeProcess(const std::string &benchDirectory, const std::string &command)
{
    if (::fork() != 0) {
        return 0;
    }
    ::setsid();
    if (::chdir("/") != 0) {
        return 1;
    }
    for (std::FILE *stream : {stdin, stdout, stderr}) {
        static_cast<void>(std::freopen("/dev/null", "r+", stream));
    }
    // Refused when the bench is gone, and its companion with it.
    return attempt([&] { bench::standFor(command, benchDirectory); }) ? 0 : 1;
}

/// The answer of the stand-in; a bench that cannot be changed does not keep it from answering.
int answer(const std::vector<std::string> &words)
{
    std::unique_ptr<bench::BenchStore> store;
    attempt([&] {
        store = std::make_unique<bench::BenchStore>(bench::benchDirectory());
        bench::Host(*store).logCall(words);
    });
    int status = 1;
    attempt([&] { status = bench::runHostTool(store.get(), words); });
    return status;
}

/// Becomes the first tool of that name on PATH that does not lie beside the stand-ins. Returns only when
/// there is none.
void becomeRealTool(const std::string &name, char **argv)
{
    const char *const path = std::getenv("PATH");
    std::istringstream directories(path == nullptr ? "/usr/bin:/bin" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        std::error_code error;
        const bool isOwn = std::filesystem::equivalent(directory, bench::executableDirectory(), error);
        const std::string tool = std::string(directory).append("/" + name);
        if (!isOwn && !std::filesystem::is_directory(tool, error)) {
            ::execv(tool.c_str(), argv);
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> words(argv, argv + argc);
    std::string &name = words.front();
    name = name.substr(name.rfind('/') + 1);
    if (name == "host-tool" && argc == 4 && words[1] == "--process") {
        return becomeProcess(words[2], words[3]);
    }
    if (name == "host-tool") {
        std::fprintf(stderr, "host-tool is called by the names of the tools that it stands in for\n");
        return 2;
    }
    const int status = answer(words);
    if (status != bench::NotMine) {
        return status;
    }
    becomeRealTool(name, argv);
    std::fprintf(stderr, "%s: command not found\n", name.c_str());
    return 127;
}
