// What a drive bench costs those who look at it, beside the start of a program that does nothing.

#include "bench/core/Discovery.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Files.h"
#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"
#include "benchmarks/Median.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

extern char **environ; // NOLINT(readability-redundant-declaration): macOS declares it nowhere

namespace {

constexpr int DriveCount = 1000;
constexpr int Turns = 21;

double medianMilliseconds(const std::function<void()> &work)
{
    std::vector<double> turns;
    for (int turn = 0; turn < Turns; ++turn) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        turns.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
    }
    return median(turns);
}

/// Runs a program to its end; what it prints is thrown away.
void run(std::vector<std::string> words)
{
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string &word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    int status = ::posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (status == 0) {
        ::waitpid(process, &status, 0);
    }
    if (status != 0) {
        std::fprintf(stderr, "benchmark-bench: %s failed\n", arguments[0]);
    }
}

void fill(bench::BenchStore &store)
{
    const std::vector<bench::Drive> samples = bench::sampleDrives();
    bench::DriveLifeCycle lifeCycle(store);
    for (std::size_t i = 0; i < DriveCount; ++i) {
        bench::Drive drive = samples[i % samples.size()];
        drive.serial = "TV" + std::to_string(i);
        lifeCycle.add(drive);
    }
}

/// Prints a row: what was measured, and what it is to be at most.
void print(const char *what, double milliseconds, const char *aim)
{
    std::printf("%-44s %7.1f ms %26s\n", what, milliseconds, aim);
}

void measure(const std::string &directory)
{
    bench::BenchStore::create(directory, false, fill);
    ::setenv("TARVO_BENCH", directory.c_str(), 1);
    print("a query of 1,000 drives", medianMilliseconds([&] {
        bench::BenchStore store(directory);
        bench::Discovery(store, bench::executableDirectory()).query();
    }),
        "5");
    print("drive-bench list, 1,000 drives", medianMilliseconds([] { run({DRIVE_BENCH, "list"}); }), "15");
    print("drive-bench list --json, 1,000 drives", medianMilliseconds([] {
        run({DRIVE_BENCH, "list", "--json"});
    }),
        "");
    print("the stand-in for ls", medianMilliseconds([] {
        run({HOST_TOOLS "/ls", "/Library/LaunchDaemons"});
    }),
        "5");
    print("/bin/true, the floor of the last three", medianMilliseconds([] { run({"/bin/true"}); }), "");
}

} // namespace

int main()
{
    std::string parent = std::filesystem::temp_directory_path() / "benchmark-bench-XXXXXX";
    if (::mkdtemp(parent.data()) == nullptr) {
        std::perror("benchmark-bench");
        return 1;
    }
    int status = 0;
    try {
        measure(parent + "/bench");
    } catch (const bench::Refused &refused) {
        std::fprintf(stderr, "benchmark-bench: %s\n", refused.what());
        status = 1;
    }
    std::filesystem::remove_all(parent);
    return status;
}
