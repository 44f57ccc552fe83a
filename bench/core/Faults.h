// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// JSON as the bench stores and prints it; what drives report are texts of characters U+0000 to U+00FF.
using Json = nlohmann::json;

enum class FaultKind {
    SlowProbe,
    SettleQueries,
    SettleTime,
    NeverSettles,
    WrongImage,
    TruncatedImage,
    FlashError,
    VerifyError,
    PulledOut,
    UnmountReturns,
    NoReturn,
    NewSerial,
    DuplicateSerial,
    Report,
};

/// What a fault takes as its value.
enum class FaultValue { None, Number, OptionalNumber, Text, Field };

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
    const char *name; ///< as commands and documents spell it
    FaultValue value;
    const char *valueName; ///< what the value is called in help texts; empty when there is none
    UsedUpBy usedUpBy;
    const char *example; ///< a value that shows what the fault does; empty when there is none
    const char *description;
    std::int64_t minimum = 0; ///< of a value that is a number, both limits included
    std::int64_t maximum = 0;
};

/// A fault set on a drive, with its value as a person gives it: "4096", "0x1000", "modelName=Pebble".
struct Fault
{
    FaultKind fault = FaultKind::SlowProbe;
    std::string value; ///< empty for a kind that takes none
    bool once = false; ///< cleared as soon as it is used up

    std::int64_t number() const; ///< the value of a kind that takes a number
    std::string field() const; ///< what stands before the equals sign of FIELD=VALUE
    std::string fieldValue() const; ///< and behind it
};

const std::array<FaultDescription, 14> &faultDescriptions();
const FaultDescription &describe(FaultKind kind);
/// The kind of that name; refused when there is none.
FaultKind faultNamed(const std::string &name);

/// Refused when the value is not one that the kind takes.
void check(const Fault &fault);

/// The fault as a person writes it: "flash-error 4096", with " (once)" behind one that is set for once.
std::string faultText(const Fault &fault);

using Faults = std::vector<Fault>;

/// The first fault of that kind; null when there is none.
const Fault *find(const Faults &faults, FaultKind kind);
/// The number of the first fault of that kind; 0 when there is none.
std::int64_t numberOf(const Faults &faults, FaultKind kind);
/// Sets a fault; one of the same kind, and for a report of the same field, is replaced.
void set(Faults *faults, const Fault &fault);
/// Removes all faults of that kind; true when there was one.
bool remove(Faults *faults, FaultKind kind);
/// Removes the faults that are set for once and used up by this, of one kind or of any; true when there was
/// one.
bool useUp(Faults *faults, UsedUpBy event);
bool useUp(Faults *faults, FaultKind kind);

/// In JSON a kind is its name; refused when it is no kind's.
void to_json(Json &json, FaultKind kind); // NOLINT(readability-identifier-naming): the library looks for it
void from_json(const Json &json, FaultKind &kind); // NOLINT(readability-identifier-naming)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Fault, fault, value, once)

} // namespace bench
