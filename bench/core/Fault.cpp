#include "bench/core/Fault.h"

#include "bench/core/Refused.h"
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
    {FaultKind::FirmwareStatus, "firmware-status", FaultValue::Number, "CODE", UsedUpBy::Query, "discovery reports this firmware status", Smallest, Largest},
    {FaultKind::ConfigurationStatus, "configuration-status", FaultValue::Number, "CODE", UsedUpBy::Query, "discovery reports this configuration status", Smallest, Largest},
    {FaultKind::Chipset, "chipset", FaultValue::Number, "CODE", UsedUpBy::Query, "discovery reports this bridge", Smallest, Largest},
    {FaultKind::VendorId, "vendor-id", FaultValue::Number, "ID", UsedUpBy::Query, "discovery reports this vendor ID", 0, 0xFFFF},
    {FaultKind::ProductId, "product-id", FaultValue::Number, "ID", UsedUpBy::Query, "discovery reports this product ID", 0, 0xFFFF},
    {FaultKind::Text, "text", FaultValue::Field, "FIELD=TEXT", UsedUpBy::Query, "discovery reports this text; \\xNN stands for any byte"},
}};

constexpr std::array<RecordField, 7> Fields = {{
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
    switch (kind.value) {
    case FaultValue::None:
        return name + " takes no value";
    case FaultValue::Number:
    case FaultValue::OptionalNumber:
        return name + " needs a whole number from " + std::to_string(kind.minimum) + " to "
            + std::to_string(kind.maximum);
    case FaultValue::Field:
        return name + " needs FIELD=TEXT, where FIELD is one of " + recordFieldNames()
            + ", and \\xNN stands for any byte";
    case FaultValue::Text:
    case FaultValue::OptionalText:
        break;
    }
    return name + " needs a text of characters up to U+00FF, with \\xNN for any byte";
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
    const auto found = std::find_if(Descriptions.begin(), Descriptions.end(),
        [&name](const FaultDescription &candidate) { return name == candidate.name; });
    return found == Descriptions.end() ? nullptr : &*found;
}

const std::array<RecordField, 7> &recordFields()
{
    return Fields;
}

const RecordField *findRecordField(const std::string &name)
{
    const auto found = std::find_if(Fields.begin(), Fields.end(),
        [&name](const RecordField &candidate) { return name == candidate.name; });
    return found == Fields.end() ? nullptr : &*found;
}

std::string recordFieldNames()
{
    std::string names;
    for (const RecordField &field : Fields) {
        names += (names.empty() ? "" : ", ") + std::string(field.name);
    }
    return names;
}

Fault parseFault(const FaultDescription &kind, const std::optional<std::string> &value)
{
    Fault fault{kind.kind};
    if (!value && (kind.isOptional() || kind.value == FaultValue::None)) {
        return fault;
    }
    if (!value) {
        throw Refused(std::string(kind.name) + " needs a value, " + kind.valueName);
    }
    std::string text = *value;
    if (kind.takesNumber()) {
        const auto number = numberFromText(text);
        if (!number || *number < kind.minimum) {
            throw Refused(valueRule(kind));
        }
        fault.number = *number;
    } else {
        if (kind.value == FaultValue::Field) {
            const std::size_t equals = std::min(text.find('='), text.size());
            fault.field = equals == text.size() ? nullptr : findRecordField(text.substr(0, equals));
            text.erase(0, equals + 1);
        }
        const auto bytes = unescaped(text);
        if (!bytes || (bytes->empty() && kind.value != FaultValue::Field)) {
            throw Refused(valueRule(kind));
        }
        fault.text = *bytes;
    }
    check(fault);
    return fault;
}

void check(const Fault &fault)
{
    const FaultDescription &kind = describe(fault.kind);
    const bool isInRange = fault.number >= kind.minimum && fault.number <= kind.maximum;
    bool fits = fault.number == 0 && fault.text.empty() && kind.isOptional();
    switch (kind.value) {
    case FaultValue::None:
        fits = fault.number == 0 && fault.text.empty();
        break;
    case FaultValue::Number:
    case FaultValue::OptionalNumber:
        fits = fits || isInRange;
        break;
    case FaultValue::Text:
    case FaultValue::OptionalText:
        fits = fits || !fault.text.empty();
        break;
    case FaultValue::Field:
        fits = fault.field != nullptr;
        break;
    }
    if (!fits || (fault.field != nullptr && kind.value != FaultValue::Field)) {
        throw Refused(valueRule(kind));
    }
}

std::string faultText(const Fault &fault)
{
    const FaultDescription &kind = describe(fault.kind);
    std::string text = kind.name;
    if (kind.value == FaultValue::Number || (kind.takesNumber() && fault.number != 0)) {
        text += ' ' + std::to_string(fault.number);
    } else if (fault.field != nullptr) {
        text += ' ' + std::string(fault.field->name) + '=' + escaped(fault.text);
    } else if (!fault.text.empty()) {
        text += ' ' + escaped(fault.text);
    }
    return fault.once ? text + " (once)" : text;
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
    const auto end = std::remove_if(
        faults->begin(), faults->end(), [kind](const Fault &fault) { return fault.kind == kind; });
    const bool found = end != faults->end();
    faults->erase(end, faults->end());
    return found;
}

void useUp(std::vector<Fault> *faults, UsedUpBy event)
{
    const auto isUsedUp = [event](const Fault &fault) {
        return fault.once && describe(fault.kind).usedUpBy == event;
    };
    faults->erase(std::remove_if(faults->begin(), faults->end(), isUsedUp), faults->end());
}

void useUp(std::vector<Fault> *faults, FaultKind kind)
{
    const Fault *const fault = findFault(*faults, kind);
    if (fault != nullptr && fault->once) {
        removeFault(faults, kind);
    }
}

} // namespace bench
