#pragma once

#include "devices/DeviceInfo.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace bench {

enum class FaultKind {
    SlowProbe,
    SettleQueries,
    SettleTime,
    NeverSettles,
    FlashError,
    VerifyError,
    PulledOut,
    WrongImage,
    TruncatedImage,
    UnmountReturns,
    NoReturn,
    NewSerial,
    DuplicateSerial,
    FirmwareStatus,
    ConfigurationStatus,
    Chipset,
    VendorId,
    ProductId,
    Text,
};

/// What a fault takes as its value.
enum class FaultValue { None, Number, OptionalNumber, Text, OptionalText, Field };

/// What uses up a fault that is set for once.
enum class UsedUpBy {
    Query, ///< discovery has reported it
    Settling, ///< the statuses are determined
    Unplugging,
    PowerUp,
    ImageCheck, ///< an updater has looked at the image
    Striking, ///< it has ended the writing of the flash
    Unmounting,
};

/// A kind of fault: its row in the table of all kinds.
struct FaultDescription
{
    FaultKind kind;
    const char *name; ///< as commands and files spell it
    FaultValue value;
    const char *valueName; ///< what the value is called in help texts; empty when there is none
    UsedUpBy usedUpBy;
    const char *description;
    std::int64_t minimum = 0; ///< of a value that is a number, both limits included
    std::int64_t maximum = 0;
    /// The number of the record that it sets, if any.
    std::variant<std::monostate, std::uint16_t DeviceInfo::*, std::int32_t DeviceInfo::*> recordNumber = {};

    bool takesNumber() const { return value == FaultValue::Number || value == FaultValue::OptionalNumber; }
    bool takesText() const { return value == FaultValue::Text || value == FaultValue::OptionalText; }
    bool isOptional() const
    {
        return value == FaultValue::OptionalNumber || value == FaultValue::OptionalText;
    }
};

/// A text of the record that FaultKind::Text sets.
struct RecordField
{
    const char *name;
    std::string DeviceInfo::*member;
};

/// A fault set on a drive.
struct Fault
{
    FaultKind kind;
    std::int64_t number =
        0; ///< the value of a kind that takes a number; 0 for an optional one that is not given
    const RecordField *field = nullptr; ///< what FaultKind::Text sets, null for any other kind
    std::string text = {}; ///< the value of a kind that takes text, bytes
    bool once = false; ///< cleared as soon as it is used up

    /// False for a kind without a value, and for an optional one that is not given.
    bool hasValue() const;
};

const std::array<FaultDescription, 19> &faultDescriptions();
const FaultDescription &describe(FaultKind kind);
/// Null when there is no fault of that name.
const FaultDescription *findFault(const std::string &name);

const std::array<RecordField, 7> &recordFields();
/// Null when there is no text of that name.
const RecordField *findRecordField(const std::string &name);
/// The names of all those texts, separated by commas.
std::string recordFieldNames();

/// The fault of that kind with the value that a person gave, if any: a number may be hexadecimal with 0x, in
/// a text \xNN stands for any byte. Refused when the kind takes no such value.
Fault parseFault(const FaultDescription &kind, const std::optional<std::string> &value);

/// Refused when the value is not one that the kind takes.
void check(const Fault &fault);

/// The fault as a person writes it: "flash-error 4096", with " (once)" behind one that is set for once.
std::string faultText(const Fault &fault);
/// The names of the faults, separated by commas; empty when there are none.
std::string faultNames(const std::vector<Fault> &faults);

/// The first fault of that kind; null when there is none.
const Fault *findFault(const std::vector<Fault> &faults, FaultKind kind);
/// The number of the first fault of that kind; 0 when there is none.
std::int64_t numberOf(const std::vector<Fault> &faults, FaultKind kind);

/// Removes all faults of that kind; true when there was one.
bool removeFault(std::vector<Fault> *faults, FaultKind kind);

/// Removes the faults that are set for once and used up by this, of one kind or of any; true when there was
/// one.
bool useUp(std::vector<Fault> *faults, UsedUpBy event);
bool useUp(std::vector<Fault> *faults, FaultKind kind);

} // namespace bench
