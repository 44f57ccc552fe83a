// SPDX-License-Identifier: MIT
#include "bench/command/CommandLine.h"
#include "bench/core/BenchDocument.h"
#include "bench/core/Discovery.h"
#include "bench/core/Host.h"
#include "bench/core/LifeCycle.h"
#include "bench/core/Record.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <algorithm>

namespace bench {

namespace {

using Row = std::vector<std::string>;

const char *statusText(std::int32_t status)
{
    switch (status) {
    case Status::NotYetDetermined:
        return "not yet determined";
    case Status::UpdateRequired:
        return "update required";
    case Status::UpToDate:
        return "up to date";
    default:
        return "unknown";
    }
}

/// What is stored of the drive, what it is doing, and what discovery reports of it.
Json describedDrive(const Drive &drive, const DeviceInfo &record)
{
    Json json = drive;
    json["state"] = stateText(drive.state());
    json["record"] = toJson(record);
    return json;
}

/// A firmware version and a configuration revision for a person; "none" for empty ones.
std::string versionsText(const std::string &firmware, const std::string &configuration)
{
    return firmware.empty() ? "none"
                            : "firmware " + escaped(firmware) + ", configuration " + escaped(configuration);
}

void printModels(bool asJson)
{
    Json list = Json::array();
    std::vector<Row> rows{
        {"MODEL", "BUS", "PRODUCT", "BRIDGE", "RESTART", "FIRMWARE", "CONFIGURATION", "IMAGE", "BODY"}};
    for (const Model &model : models()) {
        rows.push_back(
            {model.name, model.busName(), model.isFireWire() ? "-" : hexadecimalId(model.productId),
                bridgeName(model.chipset), restartText(model.restart()), model.newestFirmware,
                model.newestConfiguration, model.imageName(), model.body});
        list.push_back({{"name", model.name}, {"vendorId", model.vendorId}, {"productId", model.productId},
            {"bridge", bridgeName(model.chipset)}, {"chipset", model.chipset},
            {"restart", restartText(model.restart())}, {"newestFirmware", model.newestFirmware},
            {"newestConfiguration", model.newestConfiguration}, {"image", model.imageName()},
            {"picture", model.picture()}, {"body", model.body}});
    }
    if (asJson) {
        print(printed({{"models", list}}));
    } else {
        printColumns(rows);
    }
}

std::string faultNames(const Faults &faults)
{
    std::string names;
    for (const Fault &fault : faults) {
        names += (names.empty() ? "" : ", ") + std::string(describe(fault.fault).name);
    }
    return names.empty() ? "-" : names;
}

void printList(const CommandLine &line)
{
    const Store store = line.openBench();
    const std::vector<Drive> drives = allDrives(store);
    const bool hasCompanion = isCompanionInstalled(store);
    if (line.options.json) {
        const std::vector<DeviceInfo> reported = records(drives, store.directory(), executableDirectory());
        Json list = Json::array();
        for (std::size_t i = 0; i < drives.size(); ++i) {
            list.push_back(describedDrive(drives[i], reported[i]));
        }
        print(printed({{"bench", store.directory()}, {"drives", list},
            {"host", {{"companionInstalled", hasCompanion}}}}));
        return;
    }
    std::vector<Row> rows{{"SERIAL", "MODEL", "STATE", "FIRMWARE", "CONFIGURATION", "FAULTS"}};
    const auto running = [](const Drive &drive, const std::string &version) {
        return drive.incomplete || version.empty() ? "none" : escaped(version);
    };
    for (const Drive &drive : drives) {
        rows.push_back(
            {escaped(drive.serial), drive.model, drive.progressText(), running(drive, drive.runningFirmware),
                running(drive, drive.runningConfiguration), faultNames(drive.faults)});
    }
    printColumns(rows);
    print(hasCompanion ? "\nCompanion: installed\n" : "\nCompanion: not installed\n");
}

/// Everything about a drive, a name and a value each.
std::vector<Row> description(const Drive &drive, const DeviceInfo &record)
{
    const Model &model = drive.catalogueModel();
    const auto code = [](const std::string &name, std::int32_t value) {
        return name + " (" + std::to_string(value) + ')';
    };
    std::vector<Row> rows{
        {"serial", escaped(drive.serial)},
        {"goes by", drive.reportedSerial == drive.serial ? "" : escaped(drive.reportedSerial)},
        {"model",
            drive.model + " (" + model.busName()
                + (model.isFireWire() ? "" : ' ' + hexadecimalId(model.productId)) + ", " + model.body + ')'},
        {"bridge", bridgeName(drive.chipset) + (" (chipset " + std::to_string(drive.chipset) + ')')},
        {"restart", restartText(model.restart())},
        {"state", drive.progressText()},
        {"running",
            drive.isInBootRom() ? "boot ROM"
                                : versionsText(drive.runningFirmware, drive.runningConfiguration)},
        {"in flash",
            drive.incomplete ? "incomplete, " + std::to_string(drive.bytesWritten) + " of "
                    + std::to_string(drive.bytesToWrite) + " bytes written"
                             : versionsText(drive.flashFirmware, drive.flashConfiguration)},
        {"image",
            escaped(textFromBytes(record.firmwareFileName)) + ", firmware "
                + escaped(textFromBytes(record.newFirmwareVersion))},
        {"statuses",
            "firmware " + code(statusText(record.firmwareStatus), record.firmwareStatus) + ", configuration "
                + code(statusText(record.configurationStatus), record.configurationStatus)},
        {"volumes", drive.mounted ? "mounted" : "not mounted"},
        {"flash rate", std::to_string(drive.flashRate) + " bytes a second"},
        {"last update", drive.lastUpdateText()},
    };
    for (const Fault &fault : drive.faults) {
        rows.push_back({"fault", faultText(fault)});
    }
    const auto isEmpty = [](const Row &row) { return row.back().empty(); };
    rows.erase(std::remove_if(rows.begin(), rows.end(), isEmpty), rows.end());
    return rows;
}

void printDrive(const CommandLine &line)
{
    line.onDrive("show", [&line](const Store &store, const std::string &serial) {
        const Drive drive = driveNamed(store, serial);
        const DeviceInfo record = records({drive}, store.directory(), executableDirectory()).front();
        if (line.options.json) {
            print(printed(describedDrive(drive, record)));
        } else {
            printColumns(description(drive, record));
        }
    });
}

} // namespace

void addListCommands(CommandLine &line)
{
    CLI::App *const modelList = line.add("models", "List the models of the catalogue", "", "--json",
        [&line] { printModels(line.options.json); });
    CLI::App *const list = line.add("list", "List the drives of the bench and the companion",
        "The versions are those that a drive runs, which may not be those in its flash.", "",
        [&line] { printList(line); });
    CLI::App *const show = line.addForDrive(
        "show", "Show everything about one drive", "", "TV0001PEBBLE", [&line] { printDrive(line); });
    for (CLI::App *command : {modelList, list, show}) {
        command->add_flag("--json", line.options.json, "print JSON");
    }
}

} // namespace bench
