// SPDX-License-Identifier: MIT
#include "bench/command/CommandLine.h"
#include "bench/core/LifeCycle.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <limits>
#include <thread>

namespace bench {

namespace {

constexpr std::chrono::milliseconds PollInterval(20);
volatile std::sig_atomic_t stopped = 0;

/// Off and, after the pause or at a signal, on again: the drive is not left unplugged.
void restart(const CommandLine &line)
{
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        std::signal(number, [](int received) { stopped = received; });
    }
    line.onDrive("unplug", unplugDrive);
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(line.options.seconds.value_or(AwaySeconds));
    while (stopped == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_until(std::min(end, std::chrono::steady_clock::now() + PollInterval));
    }
    line.onDrive("plug in", plugDrive);
    if (stopped != 0) {
        std::signal(stopped, SIG_DFL);
        std::raise(stopped);
    }
}

void putOnBench(const CommandLine &line)
{
    const Options &options = line.options;
    Drive drive = newDrive(modelNamed(options.model));
    drive.chipset = static_cast<std::int32_t>(options.chipset.value_or(drive.chipset));
    drive.plugged = !options.unplugged;
    drive.flashRate = options.rate.value_or(drive.flashRate);
    drive.flashFirmware = versionFrom(options.firmware, drive.flashFirmware);
    drive.flashConfiguration = versionFrom(options.configuration, drive.flashConfiguration);
    Store store = line.openBench();
    store.change([&] {
        drive.serial =
            options.serial.empty() ? freeSerial(store.drives(), drive.model) : textFrom(options.serial);
        attempt("cannot add " + escaped(drive.serial), [&] { addDrive(store, drive); });
    });
    print(escaped(drive.serial) + '\n');
}

void addAdd(CommandLine &line)
{
    using Code = std::numeric_limits<std::int32_t>;
    Options &options = line.options;
    CLI::App *const command = line.add("add", "Put a new drive on the bench and print its serial number",
        "Without --firmware and --configuration the drive is up to date.",
        "\"Lamina Slim\" --serial TV0042LAMINA --firmware 3.11", [&line] { putOnBench(line); });
    command->add_option("MODEL", options.model, "the name of its model")->required();
    command->add_option("--serial", options.serial, "its serial number; \\xNN stands for any byte")
        ->type_name("SERIAL");
    command->add_option("--firmware", options.firmware, "firmware version in its flash")
        ->type_name("VERSION");
    command->add_option("--configuration", options.configuration, "configuration revision in its flash")
        ->type_name("REVISION");
    addNumber(command, "--chipset", "CODE", options.chipset, Code::min(), Code::max(),
        "code of its bridge, instead of the model's");
    addRate(command, options);
    command->add_flag("--unplugged", options.unplugged, "leave it unplugged");
}

} // namespace

void addDriveCommands(CommandLine &line)
{
    addAdd(line);
    line.addForDrive("remove", "Take a drive off the bench for good", "", "TV0001PEBBLE",
        [&line] { line.onDrive("remove", removeDrive); });
    line.addForDrive("plug", "Plug a drive in", "It runs what is then in its flash.", "TV0001PEBBLE",
        [&line] { line.onDrive("plug in", plugDrive); });
    line.addForDrive("unplug", "Unplug a drive, whatever it is doing", "", "TV0001PEBBLE",
        [&line] { line.onDrive("unplug", unplugDrive); });
    CLI::App *const replug = line.addForDrive("replug", "Unplug a drive and plug it in again", "",
        "TV0002BOLLARD --for 5", [&line] { restart(line); });
    CLI::App *const powerCycle =
        line.addForDrive("power-cycle", "Switch a drive off and on with its power button", "",
            "TV0002BOLLARD --for 5", [&line] { restart(line); });
    for (CLI::App *command : {replug, powerCycle}) {
        addNumber(command, "--for", "SECONDS", line.options.seconds, 0, 3600,
            "how long it is off (" + std::to_string(AwaySeconds) + "); the program looks every "
                + std::to_string(PauseSeconds) + " seconds");
    }
}

} // namespace bench
