#include "bench/command/CommandLine.h"
#include "bench/core/BenchDocument.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"

namespace bench {

namespace {

constexpr std::size_t MaximumDocument = 256 * 1024 * 1024;

void init(const Options &options)
{
    BenchDocument document;
    std::vector<Drive> drives;
    if (!options.file.empty()) {
        std::string text;
        attempt("read " + options.file, [&] { text = readFile(options.file, MaximumDocument); });
        document = parseBench(text, options.file);
    } else if (!options.empty) {
        drives = sampleDrives();
    }
    BenchStore::create(options.benchDirectory, options.force, [&](BenchStore &store) {
        fillBench(store, document);
        for (Drive &drive : drives) {
            drive.flashRate = options.rate.value_or(drive.flashRate);
            DriveLifeCycle(store).add(drive);
        }
    });
    const std::size_t count = document.drives.size() + drives.size();
    print(options.benchDirectory + ": a bench with " + std::to_string(count) + " drives\n");
}

void addInit(CommandLine &line)
{
    Options &options = line.options;
    CLI::App *const command = line.add("init", "Make a bench with six sample drives",
        "One drive each that needs both, firmware, configuration, both over FireWire, nothing,\n"
        "and one whose bridge has no updater.",
        "--bench /tmp/bench --force", [&options] { init(options); });
    command->add_flag("--force", options.force, "replace the bench that is there");
    CLI::Option *const empty = command->add_flag("--empty", options.empty, "without the sample drives");
    CLI::Option *const rate = addNumber(command, "--rate", "BYTES", options.rate, 1, Drive::MaximumFlashRate,
        "flash rate in bytes a second (16384)");
    command->add_option("--from", options.file, "with what drive-bench export printed into this file")
        ->type_name("FILE")
        ->excludes(empty)
        ->excludes(rate);
}

} // namespace

void addBenchCommands(CommandLine &line)
{
    addInit(line);
    line.add("export", "Print the whole bench as JSON",
        "For version control, for a bug report, or to be edited and read again with init --from.",
        "> bench.json", [&line] {
            BenchStore store = line.openBench();
            print(exportBench(store));
        });
}

} // namespace bench
