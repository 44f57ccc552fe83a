// SPDX-License-Identifier: MIT
// What a drive bench costs those who look at it, each figure beside its floor.

#include "bench/core/BenchDocument.h"
#include "bench/core/Creation.h"
#include "bench/core/Discovery.h"
#include "bench/core/Files.h"
#include "bench/core/LifeCycle.h"
#include "benchmarks/Median.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <string>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

extern char **environ; // NOLINT(readability-redundant-declaration): macOS declares it nowhere

namespace {

constexpr int Turns = 21;

double medianMilliseconds(const std::function<void()> &work, int turns = Turns)
{
    std::vector<double> found;
    for (int turn = 0; turn < turns; ++turn) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        found.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
    }
    return median(found);
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

/// The sample drives again and again, up to that number.
std::vector<bench::Drive> drives(std::size_t count)
{
    const std::vector<bench::Drive> samples = bench::sampleDrives();
    std::vector<bench::Drive> found;
    for (std::size_t i = 0; i < count; ++i) {
        found.push_back(samples[i % samples.size()]);
        found.back().serial = found.back().reportedSerial = "TV" + std::to_string(i);
    }
    return found;
}

/// Prints a row: what was measured, its floor, and what it is to be at most.
void print(const char *what, double milliseconds, double floor, const char *aim)
{
    std::printf("%-36s %8.2f ms %8.2f ms %8s\n", what, milliseconds, floor, aim);
}

/// The floor of a query: the documents as texts, read by the library.
double medianOfParsing(std::size_t count)
{
    std::vector<std::string> documents;
    for (const bench::Drive &drive : drives(count)) {
        documents.push_back(bench::Json(drive).dump());
    }
    bench::Json json;
    return medianMilliseconds([&] {
        for (const std::string &document : documents) {
            json = bench::Json::parse(document);
        }
    });
}

void measureQueries(const std::string &directory, std::size_t count, const char *aim)
{
    bench::createBench(directory, false, [count](bench::Store &store) {
        bench::fillBench(store, {{}, drives(count)});
    });
    const double query = medianMilliseconds([&directory] {
        bench::Store store(directory);
        bench::query(store, bench::executableDirectory());
    });
    print(("a query of " + std::to_string(count) + " drives").c_str(), query, medianOfParsing(count), aim);
}

/// A person's own document, as large as one may be, and the same drives read from it without a bench.
void measureLargest(const std::string &parent)
{
    const std::string file = parent + "/document";
    const bench::Json json{{"version", 2}, {"drives", drives(bench::BenchDocument::MaximumDrives)}};
    bench::writeFile(file, json.dump());
    const double init = medianMilliseconds(
        [&] {
            run({DRIVE_BENCH, "init", "--force", "--bench", parent + "/largest", "--from", file});
        },
        3);
    bench::Json read;
    const double floor = medianMilliseconds(
        [&] { read = bench::Json::parse(bench::readFile(file, std::size_t(1) << 30U)); }, 3);
    print("init --from, 10,000 drives", init, floor, "2000");
}

void measure(const std::string &parent)
{
    std::printf("%-36s %11s %11s %8s\n", "", "median", "floor", "at most");
    measureQueries(parent + "/40", 40, "1");
    measureQueries(parent + "/1000", 1000, "20");
    measureLargest(parent);
    ::setenv("TARVO_BENCH", (parent + "/1000").c_str(), 1);
    const double nothing = medianMilliseconds([] { run({"/bin/true"}); });
    print("drive-bench list, 1,000 drives", medianMilliseconds([] {
        run({DRIVE_BENCH, "list"});
    }),
        nothing, "30");
    print("the stand-in for ls", medianMilliseconds([] {
        run({HOST_TOOLS "/ls", "/Library/LaunchDaemons"});
    }),
        nothing, "2.5");
}

} // namespace

int main()
{
    try {
        std::string parent = std::filesystem::temp_directory_path() / "benchmark-bench-XXXXXX";
        if (::mkdtemp(parent.data()) == nullptr) {
            std::perror("benchmark-bench");
            return 1;
        }
        measure(parent);
        std::filesystem::remove_all(parent);
        return 0;
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "benchmark-bench: %s\n", problem.what());
        return 1;
    }
}
