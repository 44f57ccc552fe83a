#include "bench/command/CommandLine.h"
#include "bench/core/DriveJson.h"
#include "bench/core/Refused.h"

#include <nlohmann/json.hpp>

namespace bench {

namespace {

void listFaults(bool asJson)
{
    Json list = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const FaultDescription &kind : faultDescriptions()) {
        const std::string value =
            kind.isOptional() ? '[' + std::string(kind.valueName) + ']' : kind.valueName;
        rows.push_back({kind.name + (' ' + value), kind.description});
        list.push_back({{"fault", kind.name}, {"value", value}, {"description", kind.description}});
    }
    if (asJson) {
        print(printed({{"faults", list}}));
    } else {
        printColumns(rows);
        print("\nFIELD is one of " + recordFieldNames() + ".\n");
    }
}

const FaultDescription &kindNamed(const std::string &name)
{
    const FaultDescription *const kind = findFault(name);
    if (kind == nullptr) {
        throw WrongUsage("there is no fault \"" + name + "\"; drive-bench fault --list shows them");
    }
    return *kind;
}

/// The fault that the command line describes. Throws WrongUsage.
Fault faultFrom(const Options &options, bool hasValue)
{
    const FaultDescription &kind = kindNamed(options.fault);
    if (hasValue && kind.value == FaultValue::None) {
        throw WrongUsage(options.fault + " takes no value");
    }
    try {
        Fault fault = parseFault(kind, hasValue ? std::optional<std::string>(options.value) : std::nullopt);
        fault.once = options.once;
        return fault;
    } catch (const Refused &refused) {
        throw WrongUsage(refused.what());
    }
}

void setFault(const CommandLine &line, bool hasValue)
{
    const Options &options = line.options;
    if (options.fault.empty()) {
        throw WrongUsage("fault needs SERIAL FAULT, or --list");
    }
    const Fault fault = faultFrom(options, hasValue);
    line.onDrive("set a fault on",
        [&fault](DriveLifeCycle &drives, const std::string &serial) { drives.setFault(serial, fault); });
}

void clearFault(const CommandLine &line, bool clearsAll)
{
    const FaultDescription *const kind = clearsAll ? nullptr : &kindNamed(line.options.fault);
    line.onDrive("clear a fault of", [kind](DriveLifeCycle &drives, const std::string &serial) {
        kind == nullptr ? drives.clearFaults(serial) : drives.clearFault(serial, kind->kind);
    });
}

} // namespace

void addFaultCommands(CommandLine &line)
{
    Options &options = line.options;
    CLI::App *const fault = line.add("fault", "Set a fault on a drive, or list all faults",
        "A fault stays until it is cleared, or with --once until it has had its effect. Numbers may be\n"
        "written in hexadecimal with 0x.",
        "TV0001PEBBLE pulled-out 20000 --once", {});
    fault->add_option("SERIAL", options.serial, "the drive");
    fault->add_option("FAULT", options.fault, "the name of the fault");
    const CLI::Option *const value = fault->add_option("VALUE", options.value, "what --list says of it");
    fault->add_flag("--once", options.once, "clear it after it has had its effect");
    fault->add_flag("--list", options.list, "list all faults and their values");
    fault->add_flag("--json", options.json, "print that list as JSON");
    fault->callback([&line, value] {
        line.options.list ? listFaults(line.options.json) : setFault(line, value->count() > 0);
    });

    CLI::App *const clear = line.addForDrive(
        "clear", "Clear a fault of a drive, or all its faults", "", "TV0001PEBBLE pulled-out", {});
    const CLI::Option *const name = clear->add_option("FAULT", options.fault, "the name of the fault");
    clear->callback([&line, name] { clearFault(line, name->count() == 0); });
}

} // namespace bench
