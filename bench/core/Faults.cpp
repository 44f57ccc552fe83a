// SPDX-License-Identifier: MIT
#include "bench/core/Faults.h"

#include "bench/core/Record.h"
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

// In the order of the enumerators. Half of a sample drive's image is written after 20,000 bytes.
// clang-format off
constexpr std::array<FaultDescription, 14> Descriptions = {{
    {FaultKind::SlowProbe, "slow-probe", FaultValue::Number, "MILLISECONDS", UsedUpBy::Query, "3000", "each query takes that much longer", 0, Minute},
    {FaultKind::SettleQueries, "settle-queries", FaultValue::Number, "QUERIES", UsedUpBy::Settling, "3", "statuses stay undetermined for that many queries after power-up", 0, Largest},
    {FaultKind::SettleTime, "settle-time", FaultValue::Number, "MILLISECONDS", UsedUpBy::Settling, "10000", "statuses stay undetermined for that long after power-up", 0, Largest},
    {FaultKind::NeverSettles, "never-settles", FaultValue::None, "", UsedUpBy::Unplugging, "", "statuses stay undetermined for ever"},
    {FaultKind::WrongImage, "wrong-image", FaultValue::None, "", UsedUpBy::ImageCheck, "", "discovery names an image for another bridge, which is refused"},
    {FaultKind::TruncatedImage, "truncated-image", FaultValue::OptionalNumber, "[BYTES]", UsedUpBy::ImageCheck, "1000", "the updater sees only that many bytes of the image (1000) and refuses it", 0, Largest},
    {FaultKind::FlashError, "flash-error", FaultValue::Number, "BYTES", UsedUpBy::Striking, "20000", "writing fails after that many bytes; the flash stays incomplete", 0, Largest},
    {FaultKind::VerifyError, "verify-error", FaultValue::None, "", UsedUpBy::Striking, "", "what is read back is not what was written; the flash stays incomplete"},
    {FaultKind::PulledOut, "pulled-out", FaultValue::Number, "BYTES", UsedUpBy::Striking, "20000", "the drive is unplugged after that many bytes; the flash stays incomplete", 0, Largest},
    {FaultKind::UnmountReturns, "unmount-returns", FaultValue::Number, "VALUE", UsedUpBy::Unmounting, "0", "volumes stay mounted and the unmount returns this value", Smallest, Largest},
    {FaultKind::NoReturn, "no-return", FaultValue::None, "", UsedUpBy::PowerUp, "", "the drive does not answer after it was plugged in"},
    {FaultKind::NewSerial, "new-serial", FaultValue::Text, "SERIAL", UsedUpBy::PowerUp, "TV9999OTHER", "the drive comes back with this serial number"},
    {FaultKind::DuplicateSerial, "duplicate-serial", FaultValue::None, "", UsedUpBy::Query, "", "discovery lists the drive twice"},
    {FaultKind::Report, "report", FaultValue::Field, "FIELD=VALUE", UsedUpBy::Query, "modelName=<b>caf\xC3\xA9</b>", "discovery reports this value; \\xNN in a text stands for any byte"},
}};
// clang-format on

template <typename Predicate>
bool removeIf(Faults *faults, Predicate isRemoved)
{
    const std::size_t before = faults->size();
    faults->erase(std::remove_if(faults->begin(), faults->end(), isRemoved), faults->end());
    return faults->size() < before;
}

} // namespace

std::int64_t Fault::number() const
{
    return numberFromText(value).value_or(0);
}

std::string Fault::field() const
{
    return value.substr(0, value.find('='));
}

std::string Fault::fieldValue() const
{
    return value.substr(std::min(value.find('='), value.size() - 1) + 1);
}

const std::array<FaultDescription, 14> &faultDescriptions()
{
    return Descriptions;
}

const FaultDescription &describe(FaultKind kind)
{
    return Descriptions[static_cast<std::size_t>(kind)];
}

FaultKind faultNamed(const std::string &name)
{
    const FaultDescription *const kind = findRow(Descriptions, name);
    require(
        kind != nullptr, "there is no fault \"" + escaped(name) + "\"; drive-bench fault --list shows them");
    return kind->kind;
}

void check(const Fault &fault)
{
    const FaultDescription &kind = describe(fault.fault);
    const std::string name = kind.name;
    switch (kind.value) {
    case FaultValue::None:
        require(fault.value.empty(), name + " takes no value");
        break;
    case FaultValue::OptionalNumber:
        if (fault.value.empty()) {
            break;
        }
        [[fallthrough]];
    case FaultValue::Number: {
        const auto number = numberFromText(fault.value);
        require(number && *number >= kind.minimum && *number <= kind.maximum,
            name + " needs " + wholeNumber(kind.minimum, kind.maximum));
        break;
    }
    case FaultValue::Text:
        require(!fault.value.empty() && bytesFromText(fault.value),
            name + " needs a text of characters up to U+00FF, with \\xNN for any byte");
        break;
    case FaultValue::Field: {
        DeviceInfo record;
        apply(fault, &record);
        break;
    }
    }
}

std::string faultText(const Fault &fault)
{
    return describe(fault.fault).name + (fault.value.empty() ? "" : ' ' + escaped(fault.value))
        + (fault.once ? " (once)" : "");
}

const Fault *find(const Faults &faults, FaultKind kind)
{
    const auto found = std::find_if(
        faults.begin(), faults.end(), [kind](const Fault &fault) { return fault.fault == kind; });
    return found == faults.end() ? nullptr : &*found;
}

std::int64_t numberOf(const Faults &faults, FaultKind kind)
{
    const Fault *const found = find(faults, kind);
    return found == nullptr ? 0 : found->number();
}

void set(Faults *faults, const Fault &fault)
{
    const bool isReport = fault.fault == FaultKind::Report;
    removeIf(faults, [&](const Fault &other) {
        return other.fault == fault.fault && (!isReport || other.field() == fault.field());
    });
    faults->push_back(fault);
}

bool remove(Faults *faults, FaultKind kind)
{
    return removeIf(faults, [kind](const Fault &fault) { return fault.fault == kind; });
}

bool useUp(Faults *faults, UsedUpBy event)
{
    return removeIf(faults,
        [event](const Fault &fault) { return fault.once && describe(fault.fault).usedUpBy == event; });
}

bool useUp(Faults *faults, FaultKind kind)
{
    return removeIf(faults, [kind](const Fault &fault) { return fault.once && fault.fault == kind; });
}

void to_json(Json &json, FaultKind kind)
{
    json = describe(kind).name;
}

void from_json(const Json &json, FaultKind &kind)
{
    kind = faultNamed(json.get<std::string>());
}

} // namespace bench
