#include "bench/command/CommandLine.h"
#include "bench/core/DriveJson.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Refused.h"

#include <nlohmann/json.hpp>

namespace bench {

namespace {

struct FaultOptions
{
    std::string serial;
    std::string fault;
    std::string value;
    bool once = false;
    bool list = false;
    bool json = false;
};

void listFaults(bool asJson)
{
    Json list = Json::array();
    std::string text;
    for (const FaultDescription &kind : faultDescriptions()) {
        const std::string value =
            kind.isOptional() ? '[' + std::string(kind.valueName) + ']' : kind.valueName;
        std::string usage = kind.name + (' ' + value);
        usage.resize(34, ' ');
        text += usage + kind.description + '\n';
        list.push_back({{"fault", kind.name}, {"value", value}, {"description", kind.description}});
    }
    print(asJson ? printed({{"faults", list}}) : text + "\nFIELD is one of " + recordFieldNames() + ".\n");
}

const FaultDescription &kindNamed(const std::string &name)
{
    const FaultDescription *const kind = findFault(name);
    if (kind == nullptr) {
        throw WrongUsage("there is no fault \"" + name + "\"; drive-bench fault --list shows them");
    }
    return *kind;
}

void setFault(const CommandLine &line, const FaultOptions &options, bool hasValue)
{
    if (options.fault.empty()) {
        throw WrongUsage("fault needs SERIAL FAULT, or --list");
    }
    const FaultDescription &kind = kindNamed(options.fault);
    if (hasValue && kind.value == FaultValue::None) {
        throw WrongUsage(options.fault + " takes no value");
    }
    Fault fault{kind.kind};
    try {
        fault = parseFault(kind, hasValue ? std::optional<std::string>(options.value) : std::nullopt);
    } catch (const Refused &refused) {
        throw WrongUsage(refused.what());
    }
    fault.once = options.once;
    const std::string serial = serialFrom(options.serial);
    attempt("set a fault on " + options.serial, [&] {
        BenchStore store = line.openBench();
        DriveLifeCycle(store).setFault(serial, fault);
    });
}

void addSet(CommandLine &line)
{
    const auto options = std::make_shared<FaultOptions>();
    CLI::App *const command = line.add(&line.root(), "fault", "Set a fault on a drive, or list all faults",
        "A fault stays until it is cleared, or with --once until it has had its effect. Numbers may be\n"
        "written in hexadecimal with 0x.",
        "drive-bench fault TV0001PEBBLE pulled-out 20000 --once");
    command->add_option("SERIAL", options->serial, "the drive");
    command->add_option("FAULT", options->fault, "the name of the fault");
    const CLI::Option *const value = command->add_option("VALUE", options->value, "what --list says of it");
    command->add_flag("--once", options->once, "clear it after it has had its effect");
    command->add_flag("--list", options->list, "list all faults and their values");
    command->add_flag("--json", options->json, "print that list as JSON");
    command->callback([=, &line] {
        if (options->list) {
            listFaults(options->json);
        } else {
            setFault(line, *options, value->count() > 0);
        }
    });
}

void addClear(CommandLine &line)
{
    const auto options = std::make_shared<FaultOptions>();
    CLI::App *const command = line.add(&line.root(), "clear", "Clear a fault of a drive, or all its faults",
        "", "drive-bench clear TV0001PEBBLE pulled-out");
    command->add_option("SERIAL", options->serial, "the drive")->required();
    const CLI::Option *const fault = command->add_option("FAULT", options->fault, "the name of the fault");
    command->callback([=, &line] {
        const FaultDescription *const kind = fault->count() > 0 ? &kindNamed(options->fault) : nullptr;
        const std::string serial = serialFrom(options->serial);
        attempt("clear a fault of " + options->serial, [&] {
            BenchStore store = line.openBench();
            if (kind == nullptr) {
                DriveLifeCycle(store).clearFaults(serial);
            } else {
                DriveLifeCycle(store).clearFault(serial, kind->kind);
            }
        });
    });
}

} // namespace

void addFaultCommands(CommandLine &line)
{
    addSet(line);
    addClear(line);
}

} // namespace bench
