#include "bench/command/CommandLine.h"
#include "bench/core/DriveJson.h"
#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"
#include "bench/core/Sha256.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

#include <filesystem>

namespace bench {

namespace {

struct BuildOptions
{
    std::vector<std::string> models;
    std::string directory = executableDirectory();
    std::string firmware;
    std::string configuration;
    bool quiet = false;
};

/// Writes all files beside their places first, so that either all of them take their places or none.
void writeAll(const std::vector<std::pair<std::string, FirmwareImage>> &images)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const auto draft = [](const std::string &file) { return file + ".new"; };
    std::string current;
    try {
        for (const auto &[file, image] : images) {
            current = file;
            if (fs::is_directory(file)) {
                throw Refused("it is a directory");
            }
            writeFile(draft(file), image.encode());
        }
    } catch (const Refused &refused) {
        for (const auto &[file, image] : images) {
            fs::remove(draft(file), error);
        }
        throw Refused(
            "cannot write " + current + ": " + refused.what() + "; name another directory with --output");
    }
    for (const auto &[file, image] : images) {
        fs::rename(draft(file), file, error);
        if (error) {
            throw Refused(
                "cannot write " + file + ": " + error.message() + "; the directory must be writable");
        }
    }
}

void build(const BuildOptions &options)
{
    std::vector<const Model *> wanted;
    for (const std::string &name : options.models) {
        wanted.push_back(findModel(name));
        if (wanted.back() == nullptr) {
            throw Refused("cannot build an image for \"" + name
                + "\": there is no such model; drive-bench models lists them");
        }
    }
    if (wanted.empty()) {
        for (const Model &model : models()) {
            wanted.push_back(&model);
        }
    }
    std::vector<std::pair<std::string, FirmwareImage>> images;
    for (const Model *model : wanted) {
        const std::string firmware = options.firmware.empty() ? model->newestFirmware : options.firmware;
        const std::string configuration =
            options.configuration.empty() ? model->newestConfiguration : options.configuration;
        checkVersion(firmware);
        checkVersion(configuration);
        images.emplace_back(options.directory + '/' + model->imageName(),
            FirmwareImage::forModel(*model, firmware, configuration));
    }
    writeAll(images);
    if (!options.quiet) {
        print(options.directory + ": " + std::to_string(images.size()) + " images\n");
    }
}

void inspect(const std::string &file, bool asJson)
{
    FirmwareImage image;
    try {
        image = FirmwareImage::read(file);
    } catch (const Refused &refused) {
        throw Refused(file + ": " + refused.what() + "; drive-bench image build makes sound ones");
    }
    const std::string firmwareDigest = hexadecimal(sha256(image.firmware));
    const std::string configurationDigest = hexadecimal(sha256(image.configuration));
    if (asJson) {
        print(printed({{"bridge", bridgeName(image.bridge)}, {"chipset", image.bridge},
            {"firmwareVersion", textFromBytes(image.firmwareVersion)},
            {"firmwareSize", image.firmware.size()}, {"firmwareDigest", firmwareDigest},
            {"configurationRevision", textFromBytes(image.configurationRevision)},
            {"configurationSize", image.configuration.size()},
            {"configurationDigest", configurationDigest}}));
        return;
    }
    print(std::string("bridge         ") + bridgeName(image.bridge) + '\n');
    print("firmware       " + escaped(image.firmwareVersion) + ", " + std::to_string(image.firmware.size())
        + " bytes, SHA-256 " + firmwareDigest + '\n');
    print("configuration  " + escaped(image.configurationRevision) + ", "
        + std::to_string(image.configuration.size()) + " bytes, SHA-256 " + configurationDigest + '\n');
}

void addBuild(CommandLine &line, CLI::App *parent)
{
    const auto options = std::make_shared<BuildOptions>();
    CLI::App *const command = line.add(parent, "build", "Write the firmware images of the models",
        "Without a model, those of all models. They go beside the executable, where the program looks\n"
        "for them.",
        "drive-bench image build Pebble --firmware 2.15 --output .");
    command->add_option("MODEL", options->models, "names of models");
    command->add_option("--output", options->directory, "write into this directory")->type_name("DIR");
    command->add_option("--firmware", options->firmware, "instead of the newest firmware version")
        ->type_name("VERSION");
    command
        ->add_option(
            "--configuration", options->configuration, "instead of the newest configuration revision")
        ->type_name("REVISION");
    command->add_flag("--quiet", options->quiet, "print nothing");
    command->callback([options] { build(*options); });
}

void addInspect(CommandLine &line, CLI::App *parent)
{
    const auto file = std::make_shared<std::string>();
    const auto asJson = std::make_shared<bool>(false);
    CLI::App *const command = line.add(parent, "inspect", "Check a firmware image and show what is in it", "",
        "drive-bench image inspect pebble.tfw");
    command->add_option("FILE", *file, "the image")->required();
    command->add_flag("--json", *asJson, "print JSON");
    command->callback([=] { inspect(*file, *asJson); });
}

} // namespace

void addImageCommands(CommandLine &line)
{
    CLI::App *const image = line.add(
        &line.root(), "image", "Build or inspect firmware images", "", "drive-bench image build --output .");
    image->require_subcommand(1);
    addBuild(line, image);
    addInspect(line, image);
}

} // namespace bench
