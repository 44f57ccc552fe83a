#include "bench/command/CommandLine.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"
#include "bench/core/Text.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace bench {

namespace {

struct AddOptions
{
    std::string model;
    std::string serial;
    std::string firmware;
    std::string configuration;
    std::int64_t chipset = 0;
    std::int64_t rate = Drive::DefaultFlashRate;
    bool unplugged = false;
};

/// Runs one change of the drive that an argument names; `action` says what it is, for what is refused.
void change(const CommandLine &line, const std::string &action, const std::string &serial,
    void (DriveLifeCycle::*function)(const std::string &))
{
    attempt(action + ' ' + serial, [&] {
        const std::string bytes = serialFrom(serial);
        BenchStore store = line.openBench();
        (DriveLifeCycle(store).*function)(bytes);
    });
}

/// Off and, after the pause, on again.
void restart(const CommandLine &line, const std::string &serial, std::int64_t seconds)
{
    change(line, "unplug", serial, &DriveLifeCycle::unplug);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    change(line, "plug in", serial, &DriveLifeCycle::plug);
}

/// "TV" and the lowest free number, then the first word of the model's name.
std::string freeSerial(const std::vector<Drive> &drives, const std::string &model)
{
    std::string beginning;
    const auto isTaken = [&beginning](const Drive &drive) {
        return drive.serial.compare(0, beginning.size(), beginning) == 0;
    };
    int number = 0;
    do {
        const std::string digits = std::to_string(++number);
        beginning = "TV" + std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits;
    } while (std::any_of(drives.begin(), drives.end(), isTaken));
    std::string word = model.substr(0, model.find(' '));
    std::transform(word.begin(), word.end(), word.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 0x20) : letter;
    });
    return beginning + word;
}

void add(const CommandLine &line, const AddOptions &options, bool hasChipset)
{
    const Model *const model = findModel(options.model);
    if (model == nullptr) {
        throw Refused(
            "cannot add \"" + options.model + "\": there is no such model; drive-bench models lists them");
    }
    Drive drive = newDrive(*model);
    drive.chipset = hasChipset ? static_cast<std::int32_t>(options.chipset) : drive.chipset;
    drive.plugged = !options.unplugged;
    drive.flashRate = options.rate;
    drive.flashFirmware = options.firmware.empty() ? drive.flashFirmware : options.firmware;
    drive.flashConfiguration =
        options.configuration.empty() ? drive.flashConfiguration : options.configuration;
    checkVersion(drive.flashFirmware);
    checkVersion(drive.flashConfiguration);
    BenchStore store = line.openBench();
    DriveLifeCycle lifeCycle(store);
    store.change([&] {
        drive.serial =
            options.serial.empty() ? freeSerial(lifeCycle.drives(), drive.model) : serialFrom(options.serial);
        attempt("add " + escaped(drive.serial), [&] { lifeCycle.add(drive); });
    });
    print(escaped(drive.serial) + '\n');
}

void addAdd(CommandLine &line)
{
    const auto options = std::make_shared<AddOptions>();
    CLI::App *const command =
        line.add(&line.root(), "add", "Put a new drive on the bench and print its serial number",
            "Without --firmware and --configuration the drive is up to date.",
            "drive-bench add \"Lamina Slim\" --serial TV0042LAMINA --firmware 3.11");
    command->add_option("MODEL", options->model, "the name of its model")->required();
    command->add_option("--serial", options->serial, "its serial number; \\xNN stands for any byte")
        ->type_name("SERIAL");
    command->add_option("--firmware", options->firmware, "firmware version in its flash")
        ->type_name("VERSION");
    command->add_option("--configuration", options->configuration, "configuration revision in its flash")
        ->type_name("REVISION");
    const CLI::Option *const chipset =
        addNumber(command, "--chipset", "CODE", options->chipset, std::numeric_limits<std::int32_t>::min(),
            std::numeric_limits<std::int32_t>::max(), "code of its bridge, instead of the model's");
    addNumber(command, "--rate", "BYTES", options->rate, 1, Drive::MaximumFlashRate,
        "flash rate in bytes a second (16384)");
    command->add_flag("--unplugged", options->unplugged, "leave it unplugged");
    command->callback([&line, options, chipset] { add(line, *options, chipset->count() > 0); });
}

void addChange(CommandLine &line, const std::string &name, const std::string &action,
    const std::string &summary, const std::string &details,
    void (DriveLifeCycle::*function)(const std::string &))
{
    const auto serial = std::make_shared<std::string>();
    CLI::App *const command =
        line.add(&line.root(), name, summary, details, "drive-bench " + name + " TV0001PEBBLE");
    command->add_option("SERIAL", *serial, "the drive")->required();
    command->callback([=, &line] { change(line, action, *serial, function); });
}

void addRestart(CommandLine &line, const std::string &name, const std::string &summary)
{
    const auto serial = std::make_shared<std::string>();
    const auto seconds = std::make_shared<std::int64_t>(3);
    CLI::App *const command =
        line.add(&line.root(), name, summary, "", "drive-bench " + name + " TV0002BOLLARD --for 5");
    command->add_option("SERIAL", *serial, "the drive")->required();
    addNumber(command, "--for", "SECONDS", *seconds, 0, 3600,
        "how long it is off (3); the program looks every 2 seconds");
    command->callback([=, &line] { restart(line, *serial, *seconds); });
}

} // namespace

void addDriveCommands(CommandLine &line)
{
    addAdd(line);
    addChange(line, "remove", "remove", "Take a drive off the bench for good", "", &DriveLifeCycle::remove);
    addChange(line, "plug", "plug in", "Plug a drive in", "It runs what is then in its flash.",
        &DriveLifeCycle::plug);
    addChange(line, "unplug", "unplug", "Unplug a drive, whatever it is doing", "", &DriveLifeCycle::unplug);
    addRestart(line, "replug", "Unplug a drive and plug it in again");
    addRestart(line, "power-cycle", "Switch a drive off and on with its power button");
}

} // namespace bench
