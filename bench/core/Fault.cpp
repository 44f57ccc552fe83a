#include "bench/core/Fault.h"

#include "bench/core/Refused.h"
#include "bench/core/Table.h"
#include "bench/core/Text.h"

#include <algorithm>
#include <limits>

namespace bench {

namespace {

constexpr std::int64_t Smallest = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t Largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t Minute = 60000;

// In the order of the enumerators.
// clang-format off
constexpr std::array<FaultDescription, 19> Descriptions = {{
    {FaultKind::SlowProbe, "slow-probe", FaultValue::Number, "MILLISECONDS", UsedUpBy::Query, "each query takes so much longer", 0, Minute},
    {FaultKind::SettleQueries, "settle-queries", FaultValue::Number, "QUERIES", UsedUpBy::Settling, "statuses stay undetermined for so many queries after power-up", 0, Largest},
    {FaultKind::SettleTime, "settle-time", FaultValue::Number, "MILLISECONDS", UsedUpBy::Settling, "statuses stay undetermined for so long after power-up", 0, Largest},
    {FaultKind::NeverSettles, "never-settles", FaultValue::None, "", UsedUpBy::Unplugging, "statuses stay undetermined for ever"},
    {FaultKind::FlashError, "flash-error", FaultValue::Number, "BYTES", UsedUpBy::Striking, "writing fails after so many bytes; the flash stays incomplete", 0, Largest},
    {FaultKind::VerifyError, "verify-error", FaultValue::None, "", UsedUpBy::Striking, "what is read back is not what was written; the flash stays incomplete"},
    {FaultKind::PulledOut, "pulled-out", FaultValue::Number, "BYTES", UsedUpBy::Striking, "the drive is unplugged after so many bytes; the flash stays incomplete", 0, Largest},
    {FaultKind::WrongImage, "wrong-image", FaultValue::None, "", UsedUpBy::ImageCheck, "discovery names an image for another bridge, which is refused"},
    {FaultKind::TruncatedImage, "truncated-image", FaultValue::OptionalNumber, "BYTES", UsedUpBy::ImageCheck, "the updater sees only so many bytes of the image (1000) and refuses it", 1, Largest},
    {FaultKind::UnmountReturns, "unmount-returns", FaultValue::Number, "VALUE", UsedUpBy::Unmounting, "volumes stay mounted and the unmount returns this value", Smallest, Largest},
    {FaultKind::NoReturn, "no-return", FaultValue::None, "", UsedUpBy::PowerUp, "the drive does not answer after it was plugged in"},
    {FaultKind::NewSerial, "new-serial", FaultValue::Text, "SERIAL", UsedUpBy::PowerUp, "the drive comes back with this serial number"},
    {FaultKind::DuplicateSerial, "duplicate-serial", FaultValue::OptionalText, "SERIAL", UsedUpBy::Query, "the drive reports this serial number of another; without one it is listed twice"},
    {FaultKind::FirmwareStatus, "firmware-status", FaultValue::Number, "CODE", UsedUpBy::Query, "discovery reports this firmware status", Smallest, Largest, &DeviceInfo::firmwareStatus},
    {FaultKind::ConfigurationStatus, "configuration-status", FaultValue::Number, "CODE", UsedUpBy::Query, "discovery reports this configuration status", Smallest, Largest, &DeviceInfo::configurationStatus},
    {FaultKind::Chipset, "chipset", FaultValue::Number, "CODE", UsedUpBy::Query, "discovery reports this bridge", Smallest, Largest, &DeviceInfo::chipsetType},
    {FaultKind::VendorId, "vendor-id", FaultValue::Number, "ID", UsedUpBy::Query, "discovery reports this vendor ID", 0, 0xFFFF, &DeviceInfo::vendorId},
    {FaultKind::ProductId, "product-id", FaultValue::Number, "ID", UsedUpBy::Query, "discovery reports this product ID", 0, 0xFFFF, &DeviceInfo::productId},
    {FaultKind::Text, "text", FaultValue::Field, "FIELD=TEXT", UsedUpBy::Query, "discovery reports this text; \\xNN stands for any byte"},
}};

constexpr std::array<RecordField, 7> RecordFields = {{
    {"auxiliaryText1", &DeviceInfo::auxiliaryText1},
    {"modelName", &DeviceInfo::modelName},
    {"serialNumber", &DeviceInfo::serialNumber},
    {"auxiliaryText2", &DeviceInfo::auxiliaryText2},
    {"firmwareVersion", &DeviceInfo::firmwareVersion},
    {"firmwareFileName", &DeviceInfo::firmwareFileName},
    {"newFirmwareVersion", &DeviceInfo::newFirmwareVersion},
}};
// clang-format on

/// What a kind of fault takes, for a person.
std::string valueRule(const FaultDescription &kind)
{
    const std::string name = kind.name;
    if (kind.value == FaultValue::None) {
        return name + " takes no value";
    }
    if (kind.takesNumber()) {
        return name + " needs " + wholeNumber(kind.minimum, kind.maximum);
    }
    return name + " needs "
        + (kind.takesText() ? "a text of characters up to U+00FF, with \\xNN for any byte"
                            : "FIELD=TEXT, where FIELD is one of " + recordFieldNames()
                    + ", and \\xNN stands for any byte");
}

template <typename Predicate>
bool removeIf(std::vector<Fault> *faults, Predicate isRemoved)
{
    const std::size_t before = faults->size();
    faults->erase(std::remove_if(faults->begin(), faults->end(), isRemoved), faults->end());
    return faults->size() < before;
}

} // namespace

const std::array<FaultDescription, 19> &faultDescriptions()
{
    return Descriptions;
}

const FaultDescription &describe(FaultKind kind)
{
    return Descriptions[static_cast<std::size_t>(kind)];
}

const FaultDescription *findFault(const std::string &name)
{
    return findRow(Descriptions, name);
}

const std::array<RecordField, 7> &recordFields()
{
    return RecordFields;
}

const RecordField *findRecordField(const std::string &name)
{
    return findRow(RecordFields, name);
}

std::string recordFieldNames()
{
    return rowNames(RecordFields);
}

Fault parseFault(const FaultDescription &kind, const std::optional<std::string> &value)
{
    Fault fault{kind.kind};
    if (!value && (kind.isOptional() || kind.value == FaultValue::None)) {
        return fault;
    }
    require(value.has_value(), std::string(kind.name) + " needs a value, " + kind.valueName);
    std::string text = *value;
    if (kind.value == FaultValue::Field) {
        const std::size_t equals = std::min(text.find('='), text.size());
        fault.field = equals == text.size() ? nullptr : findRecordField(text.substr(0, equals));
        text.erase(0, equals + 1);
    }
    const auto number = numberFromText(text);
    const auto bytes = unescaped(text);
    fault.number = kind.takesNumber() ? number.value_or(0) : 0;
    fault.text = kind.takesNumber() ? std::string() : bytes.value_or(std::string());
    const bool isRead = kind.takesNumber() ? number.has_value() : bytes.has_value();
    require(isRead && fault.hasValue(), valueRule(kind)); // an optional value that is given must be one
    check(fault);
    return fault;
}

void check(const Fault &fault)
{
    const FaultDescription &kind = describe(fault.kind);
    const bool isLeftOut = kind.isOptional() && !fault.hasValue();
    const bool numberFits = fault.number >= kind.minimum && fault.number <= kind.maximum;
    const bool isField = kind.value == FaultValue::Field;
    const bool textFits = isField || fault.text.empty() != kind.takesText();
    if ((!isLeftOut && !(numberFits && textFits)) || isField != (fault.field != nullptr)) {
        throw Refused(valueRule(kind));
    }
}

bool Fault::hasValue() const
{
    const FaultDescription &description = describe(kind);
    return description.isOptional() ? number != 0 || !text.empty() : description.value != FaultValue::None;
}

std::string faultText(const Fault &fault)
{
    const FaultDescription &kind = describe(fault.kind);
    std::string line = kind.name;
    if (fault.hasValue()) {
        line += fault.field == nullptr ? " " : std::string(" ") + fault.field->name + '=';
        line += kind.takesNumber() ? std::to_string(fault.number) : escaped(fault.text);
    }
    return fault.once ? line + " (once)" : line;
}

std::string faultNames(const std::vector<Fault> &faults)
{
    std::string names;
    for (const Fault &fault : faults) {
        names += (names.empty() ? "" : ", ") + std::string(describe(fault.kind).name);
    }
    return names;
}

const Fault *findFault(const std::vector<Fault> &faults, FaultKind kind)
{
    const auto found =
        std::find_if(faults.begin(), faults.end(), [kind](const Fault &fault) { return fault.kind == kind; });
    return found == faults.end() ? nullptr : &*found;
}

std::int64_t numberOf(const std::vector<Fault> &faults, FaultKind kind)
{
    const Fault *const found = findFault(faults, kind);
    return found == nullptr ? 0 : found->number;
}

bool removeFault(std::vector<Fault> *faults, FaultKind kind)
{
    return removeIf(faults, [kind](const Fault &fault) { return fault.kind == kind; });
}

bool useUp(std::vector<Fault> *faults, UsedUpBy event)
{
    return removeIf(
        faults, [event](const Fault &fault) { return fault.once && describe(fault.kind).usedUpBy == event; });
}

bool useUp(std::vector<Fault> *faults, FaultKind kind)
{
    return removeIf(faults, [kind](const Fault &fault) { return fault.once && fault.kind == kind; });
}

} // namespace bench
