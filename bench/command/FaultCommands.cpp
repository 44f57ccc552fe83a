// SPDX-License-Identifier: MIT
#include "bench/command/CommandLine.h"
#include "bench/core/BenchDocument.h"
#include "bench/core/LifeCycle.h"
#include "bench/core/Record.h"
#include "bench/core/Refused.h"

namespace bench {

namespace {

void listFaults(bool asJson)
{
    Json list = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const FaultDescription &kind : faultDescriptions()) {
        rows.push_back({kind.name + (' ' + std::string(kind.valueName)), kind.description});
        list.push_back({{"fault", kind.name}, {"value", kind.valueName}, {"description", kind.description}});
    }
    if (asJson) {
        print(printed({{"faults", list}}));
    } else {
        printColumns(rows);
        print("\nFIELD is one of " + recordFieldNames() + ".\n");
    }
}

/// What `work` returns; what it is refused is a wrong usage.
template <typename Work>
auto asUsage(const Work &work)
{
    try {
        return work();
    } catch (const Refused &refused) {
        throw WrongUsage(refused.what());
    }
}

void setFault(const CommandLine &line)
{
    const Options &options = line.options;
    if (options.fault.empty()) {
        throw WrongUsage("fault needs SERIAL FAULT, or --list");
    }
    const Fault fault = asUsage([&options] {
        Fault given{faultNamed(options.fault), textFrom(options.value), options.once};
        check(given);
        return given;
    });
    line.onDrive("set a fault on",
        [&fault](Store &store, const std::string &serial) { bench::setFault(store, serial, fault); });
}

void clear(const CommandLine &line)
{
    const std::string &name = line.options.fault;
    const FaultKind kind = name.empty() ? FaultKind() : asUsage([&name] { return faultNamed(name); });
    line.onDrive("clear a fault of", [&](Store &store, const std::string &serial) {
        name.empty() ? clearFaults(store, serial) : clearFault(store, serial, kind);
    });
}

} // namespace

void addFaultCommands(CommandLine &line)
{
    Options &options = line.options;
    CLI::App *const fault = line.add("fault", "Set a fault on a drive, or list all faults",
        "A fault stays until it is cleared, or with --once until it has had its effect. Numbers may be\n"
        "written in hexadecimal with 0x.",
        "TV0001PEBBLE pulled-out 20000 --once",
        [&line] { line.options.list ? listFaults(line.options.json) : setFault(line); });
    fault->add_option("SERIAL", options.serial, "the drive");
    fault->add_option("FAULT", options.fault, "the name of the fault");
    fault->add_option("VALUE", options.value, "what --list says of it");
    fault->add_flag("--once", options.once, "clear it after it has had its effect");
    fault->add_flag("--list", options.list, "list all faults and their values");
    fault->add_flag("--json", options.json, "print that list as JSON");

    line.addForDrive("clear", "Clear a fault of a drive, or all its faults", "", "TV0001PEBBLE pulled-out",
            [&line] { clear(line); })
        ->add_option("FAULT", options.fault, "the name of the fault");
}

} // namespace bench
