#include "bench/core/DriveJson.h"

#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace bench {

namespace {

[[noreturn]] void refuse(const std::string &pointer, const std::string &reason)
{
    throw Refused((pointer.empty() ? "/" : pointer) + ": " + reason);
}

/// Writes the fields as members of an object.
struct Writer
{
    Json object = Json::object();

    template <typename Number>
    void number(const char *name, Number value, Number, Number)
    {
        object[name] = value;
    }
    void flag(const char *name, bool value) { object[name] = value; }
    void bytes(const char *name, const std::string &value) { object[name] = textFromBytes(value); }
    void text(const char *name, const std::string &value) { object[name] = value; }
};

/// Reads the fields from the members of an object; a field without a member keeps its value.
struct Reader
{
    const Json &object;
    const std::string &pointer;
    std::vector<std::string> names = {};

    const Json *member(const char *name)
    {
        names.emplace_back(name);
        return findMember(object, name);
    }
    template <typename Number>
    void number(const char *name, Number &value, Number minimum, Number maximum)
    {
        const Json *const found = member(name);
        if (found == nullptr) {
            return;
        }
        // Beyond 2^63 a number would be compared as a negative one.
        const bool isSmall = !found->is_number_unsigned() || found->get<std::uint64_t>() >> 63 == 0;
        if (!found->is_number_integer() || !isSmall || *found < minimum || *found > maximum) {
            refuse(pointer + '/' + name,
                "must be a whole number from " + std::to_string(minimum) + " to " + std::to_string(maximum));
        }
        value = found->get<Number>();
    }
    void flag(const char *name, bool &value)
    {
        const Json *const found = member(name);
        if (found != nullptr && !found->is_boolean()) {
            refuse(pointer + '/' + name, "must be true or false");
        }
        value = found == nullptr ? value : found->get<bool>();
    }
    void bytes(const char *name, std::string &value)
    {
        std::string text = textFromBytes(value);
        this->text(name, text);
        const auto found = bytesFromText(text);
        if (!found) {
            refuse(pointer + '/' + name, "must hold characters U+0000 to U+00FF only");
        }
        value = *found;
    }
    void text(const char *name, std::string &value)
    {
        const Json *const found = member(name);
        if (found != nullptr && !found->is_string()) {
            refuse(pointer + '/' + name, "must be a text");
        }
        value = found == nullptr ? value : found->get<std::string>();
    }
};

template <typename SomeHost, typename Visitor>
void visitHostFields(SomeHost &host, Visitor &visitor)
{
    visitor.flag("companionInstalled", host.companionInstalled);
    visitor.flag("serviceSubmitted", host.serviceSubmitted);
    visitor.flag("extensionInstalled", host.extensionInstalled);
    visitor.flag("extensionLoaded", host.extensionLoaded);
    visitor.text("extensionVersion", host.extensionVersion);
}

Json faultToJson(const Fault &fault)
{
    const FaultDescription &kind = describe(fault.kind);
    Json json{{"fault", kind.name}, {"once", fault.once}};
    if (kind.value == FaultValue::Number || (kind.takesNumber() && fault.number != 0)) {
        json["value"] = fault.number;
    } else if (!fault.text.empty() || fault.field != nullptr) {
        json["value"] = textFromBytes(fault.text);
    }
    if (fault.field != nullptr) {
        json["field"] = fault.field->name;
    }
    return json;
}

Fault faultFromJson(const Json &json, const std::string &pointer)
{
    Reader reader{json, pointer};
    if (!json.is_object()) {
        refuse(pointer, "must be an object");
    }
    std::string name;
    reader.text("fault", name);
    const FaultDescription *const kind = findFault(name);
    if (kind == nullptr) {
        refuse(pointer + "/fault", "names no known fault");
    }
    Fault fault{kind->kind};
    reader.flag("once", fault.once);
    if (kind->takesNumber()) {
        reader.number("value", fault.number, kind->minimum, kind->maximum);
    } else if (kind->value != FaultValue::None) {
        reader.bytes("value", fault.text);
    }
    if (kind->value == FaultValue::Field) {
        std::string field;
        reader.text("field", field);
        fault.field = findRecordField(field);
        if (fault.field == nullptr) {
            refuse(pointer + "/field", "must be one of " + recordFieldNames());
        }
    }
    checkMembers(json, pointer, reader.names);
    try {
        check(fault);
    } catch (const Refused &refused) {
        refuse(pointer, refused.what());
    }
    return fault;
}

} // namespace

Json toJson(const Drive &drive)
{
    Writer writer;
    visitFields(drive, writer);
    Json &faults = writer.object["faults"] = Json::array();
    for (const Fault &fault : drive.faults) {
        faults.push_back(faultToJson(fault));
    }
    return writer.object;
}

Json toJson(const HostState &host)
{
    Writer writer;
    visitHostFields(host, writer);
    Json &processes = writer.object["processes"] = Json::array();
    for (const Process &process : host.processes) {
        processes.push_back({{"id", process.id}, {"command", process.command}});
    }
    return writer.object;
}

Json toJson(const DeviceInfo &record)
{
    return {
        {"auxiliaryText1", textFromBytes(record.auxiliaryText1)},
        {"productId", record.productId},
        {"modelName", textFromBytes(record.modelName)},
        {"serialNumber", textFromBytes(record.serialNumber)},
        {"vendorId", record.vendorId},
        {"auxiliaryText2", textFromBytes(record.auxiliaryText2)},
        {"firmwareVersion", textFromBytes(record.firmwareVersion)},
        {"firmwareFileName", textFromBytes(record.firmwareFileName)},
        {"newFirmwareVersion", textFromBytes(record.newFirmwareVersion)},
        {"chipsetType", record.chipsetType},
        {"firmwareStatus", record.firmwareStatus},
        {"configurationStatus", record.configurationStatus},
    };
}

Drive driveFromJson(const Json &json, const std::string &pointer)
{
    Reader reader{json, pointer};
    if (!json.is_object()) {
        refuse(pointer, "must be an object");
    }
    std::string model;
    reader.bytes("model", model);
    if (findModel(model) == nullptr) {
        refuse(pointer + "/model", "names no model of the catalogue");
    }
    Drive drive = newDrive(*findModel(model));
    reader.bytes("serial", drive.serial);
    reader.bytes("flashFirmware", drive.flashFirmware);
    reader.bytes("flashConfiguration", drive.flashConfiguration);
    drive.reportedSerial = drive.serial;
    drive.runningFirmware = drive.flashFirmware;
    drive.runningConfiguration = drive.flashConfiguration;
    visitFields(drive, reader);
    reader.names.insert(reader.names.end(), {"faults", "chip"});
    checkMembers(json, pointer, reader.names);

    const Json *const faults = findMember(json, "faults");
    if (faults != nullptr && !faults->is_array()) {
        refuse(pointer + "/faults", "must be a list");
    }
    for (std::size_t i = 0; faults != nullptr && i < faults->size(); ++i) {
        drive.faults.push_back(faultFromJson(faults->at(i), pointer + "/faults/" + std::to_string(i)));
    }
    try {
        check(drive);
    } catch (const Refused &refused) {
        refuse(pointer, refused.what());
    }
    return drive;
}

HostState hostFromJson(const Json &json, const std::string &pointer)
{
    HostState host;
    Reader reader{json, pointer};
    if (!json.is_object()) {
        refuse(pointer, "must be an object");
    }
    visitHostFields(host, reader);
    // Its processes live on the host that it was exported from.
    reader.names.emplace_back("processes");
    checkMembers(json, pointer, reader.names);
    return host;
}

void checkMembers(const Json &json, const std::string &pointer, const std::vector<std::string> &names)
{
    if (!json.is_object()) {
        refuse(pointer, "must be an object");
    }
    for (const auto &member : json.items()) {
        if (std::find(names.begin(), names.end(), member.key()) == names.end()) {
            refuse(pointer + '/' + escaped(member.key()), "is not a known member");
        }
    }
}

const Json *findMember(const Json &object, const char *name)
{
    const auto found = object.find(name);
    return found == object.end() ? nullptr : &*found;
}

std::string printed(const Json &json, bool isIndented)
{
    return json.dump(isIndented ? 4 : -1, ' ', false, Json::error_handler_t::replace) + '\n';
}

} // namespace bench
