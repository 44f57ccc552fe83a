// SPDX-License-Identifier: MIT
#include "bench/command/CommandLine.h"
#include "bench/core/BenchDocument.h"
#include "bench/core/Creation.h"
#include "bench/core/Host.h"
#include "bench/core/Image.h"
#include "bench/core/LifeCycle.h"
#include "bench/core/Refused.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <unistd.h>

namespace bench {

namespace {

void init(const Options &options)
{
    BenchDocument document;
    std::vector<Drive> drives;
    if (!options.file.empty()) {
        const std::string text = attempt("cannot read " + options.file,
            [&] { return readFile(options.file, BenchDocument::MaximumSize + 1); });
        document = parseBench(text, options.file);
    } else if (!options.empty) {
        drives = sampleDrives();
    }
    createBench(options.benchDirectory, options.force, [&](Store &store) {
        fillBench(store, document);
        for (Drive &drive : drives) {
            drive.flashRate = options.rate.value_or(drive.flashRate);
            addDrive(store, drive);
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
    CLI::Option *const rate = addRate(command, options);
    command->add_option("--from", options.file, "with what drive-bench export printed into this file")
        ->type_name("FILE")
        ->excludes(empty)
        ->excludes(rate);
}

void buildImages(const CommandLine &line)
{
    const Options &options = line.options;
    std::vector<Model> wanted(models().begin(), models().end());
    if (!options.models.empty()) {
        wanted.clear();
        for (const std::string &name : options.models) {
            wanted.push_back(modelNamed(name));
        }
    }
    std::string directory = options.imageDirectory;
    if (directory.empty()) {
        directory = line.openBench().directory() + "/images";
        std::error_code error;
        std::filesystem::create_directory(directory, error);
    }
    for (const Model &model : wanted) {
        const std::string firmware = versionFrom(options.firmware, model.newestFirmware);
        const std::string configuration = versionFrom(options.configuration, model.newestConfiguration);
        const std::string file = directory + '/' + model.imageName();
        attempt("cannot write " + file, [&] { writeFile(file, imageFile(model, firmware, configuration)); });
    }
    print(directory + ": " + std::to_string(wanted.size()) + " images\n");
}

void addImages(CommandLine &line)
{
    Options &options = line.options;
    line.add("image", "Build firmware images", "", "build --output .", {})->require_subcommand(1);
    CLI::App *const build = line.add("image build", "Write the firmware images of the models",
        "Without a model, those of all models. Without --output they are the bench's own, which count\n"
        "before those beside the program, until the next init.",
        "Pebble --firmware 2.15", [&line] { buildImages(line); });
    build->add_option("MODEL", options.models, "names of models");
    build->add_option("--output", options.imageDirectory, "write into this directory")->type_name("DIR");
    build->add_option("--firmware", options.firmware, "instead of the newest firmware version")
        ->type_name("VERSION");
    build
        ->add_option("--configuration", options.configuration, "instead of the newest configuration revision")
        ->type_name("REVISION");
}

void setCompanion(const CommandLine &line, bool isInstalled)
{
    Store store = line.openBench();
    setCompanionInstalled(store, isInstalled);
}

void openPanel(const Options &options)
{
    const std::string program = executableDirectory() + "/drive-bench-panel";
    ::execl(program.c_str(), program.c_str(), "--bench", options.benchDirectory.c_str(), nullptr);
    throw Refused("cannot open the panel: " + program + ": " + std::strerror(errno)
        + "; build the target drive-bench-panel");
}

} // namespace

void addBenchCommands(CommandLine &line)
{
    addInit(line);
    line.add("export", "Print the whole bench as JSON",
        "For version control, for a bug report, or to be edited and read again with init --from.",
        "> bench.json", [&line] { print(printed(exportBench(line.openBench()))); });
    addImages(line);
    line.add("companion", "Install or remove the companion product", "", "install", {})
        ->require_subcommand(1);
    line.add("companion install", "Install the companion product",
        "Its service's property list is then in place, and the program warns of it.", "",
        [&line] { setCompanion(line, true); });
    line.add("companion uninstall", "Remove the companion product", "", "",
        [&line] { setCompanion(line, false); });
    line.add("panel", "Open the window with the bench", "", "", [&line] { openPanel(line.options); });
}

} // namespace bench
