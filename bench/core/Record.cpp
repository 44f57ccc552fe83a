// SPDX-License-Identifier: MIT
#include "bench/core/Record.h"

#include "bench/core/Refused.h"
#include "bench/core/Table.h"
#include "bench/core/Text.h"

#include <array>
#include <limits>
#include <type_traits>
#include <variant>

namespace bench {

namespace {

struct RecordField
{
    const char *name;
    std::variant<std::string DeviceInfo::*, std::uint16_t DeviceInfo::*, std::int32_t DeviceInfo::*> member;
};

constexpr std::array<RecordField, 12> RecordFields = {{
    {"auxiliaryText1", &DeviceInfo::auxiliaryText1},
    {"productId", &DeviceInfo::productId},
    {"modelName", &DeviceInfo::modelName},
    {"serialNumber", &DeviceInfo::serialNumber},
    {"vendorId", &DeviceInfo::vendorId},
    {"auxiliaryText2", &DeviceInfo::auxiliaryText2},
    {"firmwareVersion", &DeviceInfo::firmwareVersion},
    {"firmwareFileName", &DeviceInfo::firmwareFileName},
    {"newFirmwareVersion", &DeviceInfo::newFirmwareVersion},
    {"chipsetType", &DeviceInfo::chipsetType},
    {"firmwareStatus", &DeviceInfo::firmwareStatus},
    {"configurationStatus", &DeviceInfo::configurationStatus},
}};

void setMember(const std::string &value, std::string *member)
{
    const auto bytes = bytesFromText(value);
    require(bytes.has_value(), "needs a text of characters up to U+00FF, with \\xNN for any byte");
    *member = *bytes;
}

template <typename Number>
void setMember(const std::string &value, Number *member)
{
    using Limits = std::numeric_limits<Number>;
    const auto number = numberFromText(value);
    require(number && *number >= Limits::min() && *number <= Limits::max(),
        "needs " + wholeNumber(Limits::min(), Limits::max()));
    *member = static_cast<Number>(*number);
}

} // namespace

std::string recordFieldNames()
{
    return rowNames(RecordFields);
}

Json toJson(const DeviceInfo &record)
{
    Json json = Json::object();
    for (const RecordField &field : RecordFields) {
        std::visit(
            [&](auto member) {
                if constexpr (std::is_same_v<decltype(member), std::string DeviceInfo::*>) {
                    json[field.name] = textFromBytes(record.*member);
                } else {
                    json[field.name] = record.*member;
                }
            },
            field.member);
    }
    return json;
}

void apply(const Fault &report, DeviceInfo *record)
{
    const RecordField *const field = findRow(RecordFields, report.field());
    require(field != nullptr && report.value.find('=') != std::string::npos,
        "report needs FIELD=VALUE, where FIELD is one of " + recordFieldNames());
    attempt(std::string("report ") + field->name, [&] {
        std::visit([&](auto member) { setMember(report.fieldValue(), &(record->*member)); }, field->member);
    });
}

} // namespace bench
