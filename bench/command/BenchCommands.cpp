#include "bench/command/CommandLine.h"
#include "bench/core/BenchDocument.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Files.h"
#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"

namespace bench {

namespace {

constexpr std::size_t MaximumDocument = 256 * 1024 * 1024;

struct InitOptions
{
    bool force = false;
    bool empty = false;
    std::int64_t rate = Drive::DefaultFlashRate;
    std::string file;
};

BenchDocument documentFrom(const std::string &file)
{
    std::string text;
    attempt("read " + file, [&] { text = readFile(file, MaximumDocument); });
    return parseBench(text, file);
}

void init(const CommandLine &line, const InitOptions &options)
{
    std::size_t count = 0;
    if (!options.file.empty()) {
        const BenchDocument document = documentFrom(options.file);
        count = document.drives.size();
        BenchStore::create(line.benchDirectory(), options.force,
            [&document](BenchStore &store) { fillBench(store, document); });
    } else {
        std::vector<Drive> drives = options.empty ? std::vector<Drive>() : sampleDrives();
        count = drives.size();
        BenchStore::create(line.benchDirectory(), options.force, [&](BenchStore &store) {
            for (Drive &drive : drives) {
                drive.flashRate = options.rate;
                DriveLifeCycle(store).add(drive);
            }
        });
    }
    print(line.benchDirectory() + ": a bench with " + std::to_string(count) + " drives\n");
}

void addInit(CommandLine &line)
{
    const auto options = std::make_shared<InitOptions>();
    CLI::App *const command = line.add(&line.root(), "init", "Make a bench with six sample drives",
        "One drive each that needs both, firmware, configuration, both over FireWire, nothing,\n"
        "and one whose bridge has no updater.",
        "drive-bench init --bench /tmp/bench --force");
    command->add_flag("--force", options->force, "replace the bench that is there");
    CLI::Option *const empty = command->add_flag("--empty", options->empty, "without the sample drives");
    CLI::Option *const rate = addNumber(command, "--rate", "BYTES", options->rate, 1, Drive::MaximumFlashRate,
        "flash rate in bytes a second (16384)");
    command->add_option("--from", options->file, "with what drive-bench export printed into this file")
        ->type_name("FILE")
        ->excludes(empty)
        ->excludes(rate);
    command->callback([&line, options] { init(line, *options); });
}

void addExport(CommandLine &line)
{
    CLI::App *const command = line.add(&line.root(), "export", "Print the whole bench as JSON",
        "For version control, for a bug report, or to be edited and read again with init --from.",
        "drive-bench export > bench.json");
    command->callback([&line] {
        BenchStore store = line.openBench();
        print(exportBench(store));
    });
}

} // namespace

void addBenchCommands(CommandLine &line)
{
    addInit(line);
    addExport(line);
}

} // namespace bench
