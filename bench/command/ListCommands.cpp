#include "bench/command/CommandLine.h"
#include "bench/core/Discovery.h"
#include "bench/core/DriveJson.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Files.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace bench {

namespace {

using Row = std::vector<std::string>;

/// Prints rows in columns as wide as they need to be; the first row is the heading.
void printColumns(const std::vector<Row> &rows)
{
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row &row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string text;
    for (const Row &row : rows) {
        std::string cells;
        for (std::size_t i = 0; i < row.size(); ++i) {
            cells += row[i] + std::string(widths[i] + 2 - row[i].size(), ' ');
        }
        text += cells.substr(0, cells.find_last_not_of(' ') + 1) + '\n';
    }
    print(text);
}

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

std::string versionOrNone(const Drive &drive, const std::string &version)
{
    return drive.incomplete || version.empty() ? "none" : escaped(version);
}

std::string versions(const std::string &firmware, const std::string &configuration)
{
    return "firmware " + escaped(firmware) + ", configuration " + escaped(configuration);
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
                bridgeName(model.chipset), restartText(model.restart), model.newestFirmware,
                model.newestConfiguration, model.imageName(), model.body});
        list.push_back({{"name", model.name}, {"vendorId", model.vendorId}, {"productId", model.productId},
            {"bridge", bridgeName(model.chipset)}, {"chipset", model.chipset},
            {"restart", restartText(model.restart)}, {"newestFirmware", model.newestFirmware},
            {"newestConfiguration", model.newestConfiguration}, {"image", model.imageName()},
            {"picture", model.picture()}, {"pictureSize", model.pictureSize}, {"body", model.body}});
    }
    if (asJson) {
        print(printed({{"models", list}}));
    } else {
        printColumns(rows);
    }
}

void printList(const CommandLine &line, bool asJson)
{
    BenchStore store = line.openBench();
    const std::vector<Drive> drives = DriveLifeCycle(store).drives();
    const HostState host = Host(store).state();
    if (asJson) {
        const std::vector<DeviceInfo> records = Discovery(store, executableDirectory()).records(drives);
        Json list = Json::array();
        for (std::size_t i = 0; i < drives.size(); ++i) {
            list.push_back(describedDrive(drives[i], records[i]));
        }
        print(printed({{"bench", line.benchDirectory()}, {"drives", list}, {"host", toJson(host)}}));
        return;
    }
    std::vector<Row> rows{{"SERIAL", "MODEL", "STATE", "FIRMWARE", "CONFIGURATION", "FAULTS"}};
    for (const Drive &drive : drives) {
        rows.push_back({escaped(drive.serial), drive.model, drive.progressText(),
            versionOrNone(drive, drive.runningFirmware), versionOrNone(drive, drive.runningConfiguration),
            drive.faults.empty() ? "-" : faultNames(drive.faults)});
    }
    printColumns(rows);
    print("\nCompanion: " + companionText(host) + '\n');
}

std::string description(const Drive &drive, const DeviceInfo &record)
{
    const Model &model = drive.catalogueModel();
    const std::string bus =
        model.isFireWire() ? model.busName() : model.busName() + (' ' + hexadecimalId(model.productId));
    std::string text;
    const auto add = [&text](std::string name, const std::string &value) {
        name.resize(12, ' ');
        text += name + value + '\n';
    };
    add("serial", escaped(drive.serial));
    if (drive.reportedSerial != drive.serial) {
        add("goes by", escaped(drive.reportedSerial));
    }
    add("model", drive.model + " (" + bus + ", " + model.body + ')');
    add("bridge",
        std::string(bridgeName(drive.chipset)) + " (chipset " + std::to_string(drive.chipset) + ')');
    add("restart", restartText(model.restart));
    add("state", drive.progressText());
    add("running", drive.bootRom ? "boot ROM" : versions(drive.runningFirmware, drive.runningConfiguration));
    add("in flash",
        drive.incomplete ? "incomplete, " + std::to_string(drive.bytesWritten) + " of "
                + std::to_string(drive.bytesToWrite) + " bytes written"
                         : versions(drive.flashFirmware, drive.flashConfiguration));
    add("image", escaped(record.firmwareFileName) + ", firmware " + escaped(record.newFirmwareVersion));
    add("statuses",
        std::string("firmware ") + statusText(record.firmwareStatus) + " ("
            + std::to_string(record.firmwareStatus) + "), configuration "
            + statusText(record.configurationStatus) + " (" + std::to_string(record.configurationStatus)
            + ')');
    add("volumes", drive.mounted ? "mounted" : "not mounted");
    add("flash rate", std::to_string(drive.flashRate) + " bytes a second");
    if (!drive.lastUpdate.empty()) {
        add("last update", drive.lastUpdateText());
    }
    for (const Fault &fault : drive.faults) {
        add("fault", faultText(fault));
    }
    return text;
}

void printDrive(const CommandLine &line, const std::string &serial, bool asJson)
{
    attempt("show " + serial, [&] {
        BenchStore store = line.openBench();
        const Drive drive = DriveLifeCycle(store).drive(serialFrom(serial));
        const DeviceInfo record = Discovery(store, executableDirectory()).records({drive}).front();
        print(asJson ? printed(describedDrive(drive, record)) : description(drive, record));
    });
}

} // namespace

void addListCommands(CommandLine &line)
{
    const auto asJson = std::make_shared<bool>(false);
    const auto serial = std::make_shared<std::string>();
    CLI::App *const modelList =
        line.add(&line.root(), "models", "List the models of the catalogue", "", "drive-bench models --json");
    modelList->callback([asJson] { printModels(*asJson); });

    CLI::App *const list = line.add(&line.root(), "list", "List the drives of the bench and the companion",
        "The versions are those that a drive runs, which may not be those in its flash.", "drive-bench list");
    list->callback([&line, asJson] { printList(line, *asJson); });

    CLI::App *const show = line.add(
        &line.root(), "show", "Show everything about one drive", "", "drive-bench show TV0001PEBBLE");
    show->add_option("SERIAL", *serial, "the drive")->required();
    show->callback([&line, serial, asJson] { printDrive(line, *serial, *asJson); });

    for (CLI::App *command : {modelList, list, show}) {
        command->add_flag("--json", *asJson, "print JSON");
    }
}

} // namespace bench
