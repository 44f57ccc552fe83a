#include "bench/command/CommandLine.h"
#include "bench/core/Discovery.h"
#include "bench/core/DriveJson.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

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
    Json json = toJson(drive);
    json["state"] = stateText(drive.state());
    json["record"] = toJson(record);
    return json;
}

std::string companionText(const HostState &host)
{
    if (!host.companionInstalled) {
        return "not installed";
    }
    return host.processes.empty() ? "installed, not running" : "installed, running";
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
            {"picture", model.picture()}, {"pictureSize", model.pictureSize}, {"body", model.body}});
    }
    if (asJson) {
        print(printed({{"models", list}}));
    } else {
        printColumns(rows);
    }
}

void printList(const CommandLine &line)
{
    BenchStore store = line.openBench();
    const std::vector<Drive> drives = DriveLifeCycle(store).drives();
    const HostState host = Host(store).state();
    if (line.options.json) {
        const std::vector<DeviceInfo> records = Discovery(store, executableDirectory()).records(drives);
        Json list = Json::array();
        for (std::size_t i = 0; i < drives.size(); ++i) {
            list.push_back(describedDrive(drives[i], records[i]));
        }
        print(printed({{"bench", line.options.benchDirectory}, {"drives", list}, {"host", toJson(host)}}));
        return;
    }
    std::vector<Row> rows{{"SERIAL", "MODEL", "STATE", "FIRMWARE", "CONFIGURATION", "FAULTS"}};
    const auto running = [](const Drive &drive, const std::string &version) {
        return drive.incomplete || version.empty() ? "none" : escaped(version);
    };
    for (const Drive &drive : drives) {
        rows.push_back({escaped(drive.serial), drive.model, drive.progressText(),
            running(drive, drive.runningFirmware), running(drive, drive.runningConfiguration),
            drive.faults.empty() ? "-" : faultNames(drive.faults)});
    }
    printColumns(rows);
    print("\nCompanion: " + companionText(host) + '\n');
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
            drive.bootRom ? "boot ROM" : versionsText(drive.runningFirmware, drive.runningConfiguration)},
        {"in flash",
            drive.incomplete ? "incomplete, " + std::to_string(drive.bytesWritten) + " of "
                    + std::to_string(drive.bytesToWrite) + " bytes written"
                             : versionsText(drive.flashFirmware, drive.flashConfiguration)},
        {"image", escaped(record.firmwareFileName) + ", firmware " + escaped(record.newFirmwareVersion)},
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
    attempt("show " + line.options.serial, [&line] {
        BenchStore store = line.openBench();
        const Drive drive = DriveLifeCycle(store).drive(serialFrom(line.options.serial));
        const DeviceInfo record = Discovery(store, executableDirectory()).records({drive}).front();
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
