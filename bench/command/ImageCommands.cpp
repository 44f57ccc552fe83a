#include "bench/command/CommandLine.h"
#include "bench/core/Bytes.h"
#include "bench/core/DriveJson.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Latin1.h"
#include "bench/core/Refused.h"
#include "bench/core/Sha256.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>

namespace bench {

namespace {

/// Writes files, each a path with its content, beside their places first, so that either all of them take
/// their places or none.
void writeAll(const std::map<std::string, std::string> &files)
{
    namespace fs = std::filesystem;
    const std::string draft = ".new";
    std::error_code error;
    std::string current;
    try {
        for (const auto &[file, content] : files) {
            current = file;
            if (fs::is_directory(file, error)) {
                throw Refused("it is a directory");
            }
            writeFile(file + draft, content);
        }
    } catch (const Refused &refused) {
        for (const auto &[file, content] : files) {
            fs::remove(file + draft, error);
        }
        throw Refused(
            "cannot write " + current + ": " + refused.what() + "; name another directory with --output");
    }
    for (const auto &[file, content] : files) {
        fs::rename(file + draft, file, error);
        if (error) {
            throw Refused(
                "cannot write " + file + ": " + error.message() + "; the directory must be writable");
        }
    }
}

void buildImages(const Options &options)
{
    std::vector<Model> wanted;
    for (const std::string &name : options.models) {
        attempt("build an image for \"" + name + '"', [&] { wanted.push_back(modelNamed(name)); });
    }
    if (wanted.empty()) {
        wanted.assign(models().begin(), models().end());
    }
    std::map<std::string, std::string> files;
    for (const Model &model : wanted) {
        const std::string firmware = versionFrom(options.firmware, model.newestFirmware);
        const std::string configuration = versionFrom(options.configuration, model.newestConfiguration);
        files[options.imageDirectory + '/' + model.imageName()] =
            FirmwareImage::forModel(model, firmware, configuration).encode();
    }
    writeAll(files);
    if (!options.quiet) {
        print(options.imageDirectory + ": " + std::to_string(files.size()) + " images\n");
    }
}

void inspectImage(const std::string &file, bool asJson)
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
    const auto part = [](const std::string &version, const std::string &content, const std::string &digest) {
        return escaped(version) + ", " + std::to_string(content.size()) + " bytes, SHA-256 " + digest;
    };
    printColumns({{"bridge", bridgeName(image.bridge)},
        {"firmware", part(image.firmwareVersion, image.firmware, firmwareDigest)},
        {"configuration", part(image.configurationRevision, image.configuration, configurationDigest)}});
}

} // namespace

void addImageCommands(CommandLine &line)
{
    Options &options = line.options;
    line.add("image", "Build or inspect firmware images", "", "build --output .", {})->require_subcommand(1);

    CLI::App *const build = line.add("image build", "Write the firmware images of the models",
        "Without a model, those of all models. They go beside the executable, where the program looks\n"
        "for them.",
        "Pebble --firmware 2.15 --output .", [&options] { buildImages(options); });
    build->add_option("MODEL", options.models, "names of models");
    build->add_option("--output", options.imageDirectory, "write into this directory")->type_name("DIR");
    build->add_option("--firmware", options.firmware, "instead of the newest firmware version")
        ->type_name("VERSION");
    build
        ->add_option("--configuration", options.configuration, "instead of the newest configuration revision")
        ->type_name("REVISION");
    build->add_flag("--quiet", options.quiet, "print nothing");

    CLI::App *const inspect = line.add("image inspect", "Check a firmware image and show what is in it", "",
        "pebble.tfw", [&options] { inspectImage(options.file, options.json); });
    inspect->add_option("FILE", options.file, "the image")->required();
    inspect->add_flag("--json", options.json, "print JSON");
}

} // namespace bench
