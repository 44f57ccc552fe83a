#include "bench/core/DriveJson.h"

#include "bench/core/Latin1.h"
#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace bench {

namespace {

/// The fields as members of an object.
template <typename Fields, typename Owner>
Json membersOf(const Fields &fields, const Owner &owner)
{
    Json object = Json::object();
    for (const auto &field : fields) {
        field.visit(owner, [&](const auto &value) {
            if constexpr (std::is_same_v<decltype(value), const std::string &>) {
                object[field.name] = field.isUtf8 ? value : textFromBytes(value);
            } else {
                object[field.name] = value;
            }
        });
    }
    return object;
}

template <typename Owner>
void read(const Json &json, const Field<Owner> &, bool *value)
{
    require(json.is_boolean(), "must be true or false");
    *value = json.get<bool>();
}

template <typename Owner>
void read(const Json &json, const Field<Owner> &field, std::int64_t *value)
{
    // Beyond 2^63 a number would be compared as a negative one.
    const bool isSmall = !json.is_number_unsigned() || json.get<std::uint64_t>() >> 63 == 0;
    const bool fits = json.is_number_integer() && isSmall && json >= field.minimum && json <= field.maximum;
    require(fits, "must be " + wholeNumber(field.minimum, field.maximum));
    *value = json.get<std::int64_t>();
}

template <typename Owner>
void read(const Json &json, const Field<Owner> &field, std::string *value)
{
    require(json.is_string(), "must be a text");
    const auto &text = json.get_ref<const std::string &>();
    const auto bytes = field.isUtf8 ? text : bytesFromText(text);
    require(bytes.has_value(), "must hold characters U+0000 to U+00FF only");
    *value = *bytes;
}

/// Reads the fields from the members of an object; a field without a member keeps its value.
template <typename Fields, typename Owner>
void readFields(const Json &object, const Fields &fields, Owner *owner)
{
    for (const auto &field : fields) {
        readMember(object, field.name, [&](const Json &member) {
            field.visit(*owner, [&](auto &value) { read(member, field, &value); });
        });
    }
}

template <typename Fields>
std::vector<std::string> namesOf(const Fields &fields, std::vector<std::string> others)
{
    for (const auto &field : fields) {
        others.emplace_back(field.name);
    }
    return others;
}

/// The fields of a fault of that kind but those that name rows of tables.
std::vector<Field<Fault>> fieldsOf(const FaultDescription &kind)
{
    std::vector<Field<Fault>> fields{{"once", &Fault::once}};
    if (kind.takesNumber()) {
        fields.push_back({"value", &Fault::number, kind.minimum, kind.maximum});
    } else if (kind.value != FaultValue::None) {
        fields.push_back({"value", &Fault::text});
    }
    return fields;
}

Json faultToJson(const Fault &fault)
{
    const FaultDescription &kind = describe(fault.kind);
    Json json{{"fault", kind.name}};
    json.update(membersOf(fieldsOf(kind), fault));
    if (!fault.hasValue()) {
        json.erase("value");
    }
    if (fault.field != nullptr) {
        json["field"] = fault.field->name;
    }
    return json;
}

/// A member that names a row of a table, found by `find`. Refused with the reason when there is no such row.
template <typename Find>
auto readName(const Json &object, const char *member, Find find, const std::string &reason)
{
    std::string name;
    readMember(object, member, [&](const Json &json) { read(json, Field<Fault>(), &name); });
    const auto *const found = find(name);
    within(member, [&] { require(found != nullptr, reason); });
    return found;
}

Fault faultFromJson(const Json &json)
{
    require(json.is_object(), "must be an object");
    const FaultDescription &kind = *readName(
        json, "fault", [](const std::string &name) { return findFault(name); }, "names no known fault");
    Fault fault{kind.kind};
    std::vector<std::string> others{"fault"};
    if (kind.value == FaultValue::Field) {
        fault.field = readName(json, "field", findRecordField, "must be one of " + recordFieldNames());
        others.emplace_back("field");
    }
    readFields(json, fieldsOf(kind), &fault);
    checkMembers(json, namesOf(fieldsOf(kind), others));
    check(fault);
    return fault;
}

} // namespace

Json toJson(const Drive &drive)
{
    Json json = membersOf(driveFields(), drive);
    Json &faults = json["faults"] = Json::array();
    for (const Fault &fault : drive.faults) {
        faults.push_back(faultToJson(fault));
    }
    return json;
}

Json toJson(const HostState &host)
{
    Json json = membersOf(hostFields(), host);
    Json &processes = json["processes"] = Json::array();
    for (const Process &process : host.processes) {
        processes.push_back({{"id", process.id}, {"command", process.command}});
    }
    return json;
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

Drive driveFromJson(const Json &json)
{
    checkMembers(json, namesOf(driveFields(), {"faults", "chip"}));
    Drive drive = newDrive(*readName(json, "model", findModel, "names no model of the catalogue"));
    readFields(json, driveFields(), &drive);
    drive.reportedSerial = drive.serial;
    drive.runningFirmware = drive.flashFirmware;
    drive.runningConfiguration = drive.flashConfiguration;
    readFields(json, driveFields(), &drive); // which may hold others than these
    readItems(json, "faults", [&](const Json &fault) { drive.faults.push_back(faultFromJson(fault)); });
    check(drive);
    return drive;
}

HostState hostFromJson(const Json &json)
{
    // Its processes live on the host that it was exported from.
    checkMembers(json, namesOf(hostFields(), {"processes"}));
    HostState host;
    readFields(json, hostFields(), &host);
    return host;
}

void within(const std::string &part, const std::function<void()> &work)
{
    try {
        work();
    } catch (const Refused &refused) {
        const std::string reason = refused.what();
        throw Refused('/' + escaped(part) + (reason.front() == '/' ? "" : ": ") + reason);
    }
}

void readMember(
    const Json &object, const std::string &name, const std::function<void(const Json &member)> &read)
{
    const auto member = object.find(name);
    if (member != object.end()) {
        within(name, [&] { read(*member); });
    }
}

void readItems(const Json &object, const std::string &name, const std::function<void(const Json &item)> &read)
{
    readMember(object, name, [&](const Json &list) {
        require(list.is_array(), "must be a list");
        for (std::size_t i = 0; i < list.size(); ++i) {
            within(std::to_string(i), [&] { read(list[i]); });
        }
    });
}

void checkMembers(const Json &json, const std::vector<std::string> &names, const char *reason)
{
    require(json.is_object(), "must be an object");
    for (const auto &member : json.items()) {
        const bool isKnown = std::find(names.begin(), names.end(), member.key()) != names.end();
        within(member.key(), [&] { require(isKnown, reason); });
    }
}

std::string printed(const Json &json, bool isIndented)
{
    return json.dump(isIndented ? 4 : -1, ' ', false, Json::error_handler_t::replace) + '\n';
}

} // namespace bench
