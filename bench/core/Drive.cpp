// SPDX-License-Identifier: MIT
#include "bench/core/Drive.h"

#include "bench/core/Image.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>

namespace bench {

namespace {

constexpr std::size_t MaximumSerialLength = 80;
/// A flash whose writer was not seen for that many milliseconds is not being written any more.
constexpr std::int64_t HeartbeatTimeout = 1000;
/// The largest number that JSON carries exactly.
constexpr std::int64_t MaximumNumber = std::int64_t(1) << 53;

// In the order of the enumerators.
constexpr const char *StateTexts[] = {
    "unplugged", "does not answer", "being written", "boot ROM", "restart needed", "ready"};

/// A drive with an older version of what is named; null stands for the newest.
Drive sample(const char *serial, const char *model, const char *firmware, const char *configuration)
{
    Drive drive = newDrive(modelNamed(model));
    drive.serial = serial;
    drive.flashFirmware = firmware == nullptr ? drive.flashFirmware : firmware;
    drive.flashConfiguration = configuration == nullptr ? drive.flashConfiguration : configuration;
    return drive;
}

/// What the value would have to be to have the type of the pattern; null when it has. The library's own
/// conversions would make a number of true, and a whole one of 1.5.
const char *typeWanted(const Json &json, const Json &pattern)
{
    switch (pattern.type()) {
    case Json::value_t::object:
        return json.is_object() ? nullptr : "an object";
    case Json::value_t::array:
        return json.is_array() ? nullptr : "a list";
    case Json::value_t::string:
        return json.is_string() ? nullptr : "a text";
    case Json::value_t::boolean:
        return json.is_boolean() ? nullptr : "true or false";
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
        // Beyond 2^63 an unsigned number would become a negative one.
        return json.is_number_integer()
                && (!json.is_number_unsigned() || json.get<std::uint64_t>() >> 63U == 0)
            ? nullptr
            : "a whole number";
    default:
        return nullptr;
    }
}

const Json &patternOfDrives()
{
    // Never freed: a thread may still read a drive while the process ends.
    static const auto *const pattern = [] {
        Drive drive;
        drive.faults = {Fault{}};
        return new Json(drive);
    }();
    return *pattern;
}

/// The document with what a new drive of its model, plugged in now, has.
Json withDefaults(const Json &json)
{
    Json whole = newDrive(modelNamed(json.value("model", "")));
    whole.update(json);
    for (const auto &[member, source] :
        {std::pair("reportedSerial", "serial"), std::pair("runningFirmware", "flashFirmware"),
            std::pair("runningConfiguration", "flashConfiguration")}) {
        whole[member] = json.contains(member) ? json[member] : whole[source];
    }
    return whole;
}

} // namespace

const char *stateText(DriveState state)
{
    return StateTexts[static_cast<std::size_t>(state)];
}

DriveState Drive::state() const
{
    if (!plugged) {
        return DriveState::Unplugged;
    }
    if (!answers) {
        return DriveState::Silent;
    }
    if (incomplete) {
        // A heartbeat from the future is one of a clock that was set back since.
        const std::int64_t age = now() - heartbeat;
        return age >= 0 && age <= HeartbeatTimeout ? DriveState::Writing : DriveState::BootRom;
    }
    const bool isCurrent = runningFirmware == flashFirmware && runningConfiguration == flashConfiguration;
    return isCurrent ? DriveState::Ready : DriveState::RestartNeeded;
}

bool Drive::isInterrupted() const
{
    return incomplete && heartbeat != 0 && state() != DriveState::Writing;
}

std::string Drive::progressText() const
{
    const DriveState current = state();
    const std::string text = stateText(current);
    return current == DriveState::Writing && bytesToWrite > 0
        ? text + ' ' + std::to_string(100 * bytesWritten / bytesToWrite) + '%'
        : text;
}

std::string Drive::lastUpdateText() const
{
    const bool isCutShort = isInterrupted();
    if (lastUpdate.empty() && !isCutShort) {
        return {};
    }
    const auto seconds = static_cast<std::time_t>((isCutShort ? heartbeat : lastUpdateAt) / 1000);
    std::tm local = {};
    char time[8] = {};
    std::strftime(time, sizeof time, "%H:%M", ::localtime_r(&seconds, &local));
    return (isCutShort ? "interrupted" : oneLine(lastUpdate)) + ", at " + time;
}

void Drive::setLastUpdate(const std::string &outcome)
{
    lastUpdate = outcome;
    lastUpdateAt = now();
}

Drive newDrive(const Model &model)
{
    Drive drive;
    drive.model = model.name;
    drive.chipset = model.chipset;
    drive.flashFirmware = model.newestFirmware;
    drive.flashConfiguration = model.newestConfiguration;
    return drive;
}

std::vector<Drive> sampleDrives()
{
    std::vector<Drive> drives{
        sample("TV0001PEBBLE", "Pebble", "2.07", "3"),
        sample("TV0002BOLLARD", "Bollard USB3", "3.91", nullptr),
        sample("TV0003LAMINA", "Lamina Slim", nullptr, "4"),
        sample("TV0004HARBOUR", "Harbour (FireWire 800)", "1.40", "2"),
        sample("TV0005SKIFF", "Skiff", nullptr, nullptr),
        sample("TV0006DUO", "Harbour Duo", "3.88", "6"),
    };
    // An early Harbour Duo, with a bridge for which there is no updater.
    drives.back().chipset = Chipset::NotSupported;
    return drives;
}

Drive driveFromJson(const Json &json, const std::string &path)
{
    checkLike(json, patternOfDrives(), path);
    const bool isWhole = json.size() == patternOfDrives().size();
    const Json whole = isWhole ? Json() : attempt(path + "/model", [&json] { return withDefaults(json); });
    Drive drive = attempt(path + "/faults", [&] { return (isWhole ? json : whole).get<Drive>(); });
    try {
        check(drive);
    } catch (const Refused &refused) {
        throw Refused(path + '/' + refused.what());
    }
    return drive;
}

void check(const Drive &drive)
{
    struct Limits
    {
        const char *name;
        std::int64_t number;
        std::int64_t minimum = 0;
        std::int64_t maximum = MaximumNumber;
    };
    using Code = std::numeric_limits<std::int32_t>;
    const Limits numbers[] = {
        {"chipset", drive.chipset, Code::min(), Code::max()},
        {"bytesWritten", drive.bytesWritten},
        {"bytesToWrite", drive.bytesToWrite},
        {"flashRate", drive.flashRate, 1, Drive::MaximumFlashRate},
        {"powerUps", drive.powerUps},
        {"pluggedAt", drive.pluggedAt},
        {"unpluggedAt", drive.unpluggedAt},
        {"queries", drive.queries},
        {"flashes", drive.flashes},
        {"heartbeat", drive.heartbeat},
        {"lastUpdateAt", drive.lastUpdateAt},
    };
    for (const Limits &limits : numbers) {
        if (limits.number < limits.minimum || limits.number > limits.maximum) {
            throw Refused(
                std::string(limits.name) + ": must be " + wholeNumber(limits.minimum, limits.maximum));
        }
    }
    struct Text
    {
        const char *name;
        const std::string &text;
        std::size_t minimum;
        std::size_t maximum;
    };
    const Text texts[] = {
        {"serial", drive.serial, 1, MaximumSerialLength},
        {"reportedSerial", drive.reportedSerial, 1, MaximumSerialLength},
        {"flashFirmware", drive.flashFirmware, 0, Image::MaximumText},
        {"flashConfiguration", drive.flashConfiguration, 0, Image::MaximumText},
        {"runningFirmware", drive.runningFirmware, 0, Image::MaximumText},
        {"runningConfiguration", drive.runningConfiguration, 0, Image::MaximumText},
    };
    for (const Text &text : texts) {
        const auto length = bytesFromText(text.text).value_or(std::string(text.maximum + 1, ' ')).size();
        if (length < text.minimum || length > text.maximum) {
            throw Refused(std::string(text.name) + ": must have " + std::to_string(text.minimum) + " to "
                + std::to_string(text.maximum) + " characters, none above U+00FF");
        }
    }
    attempt("model", [&drive] { modelNamed(drive.model); });
    for (const Fault &fault : drive.faults) {
        attempt("faults", [&fault] { check(fault); });
    }
}

void checkLike(const Json &json, const Json &pattern, const std::string &path)
{
    if (const char *const wanted = typeWanted(json, pattern)) {
        throw Refused(path + ": must be " + wanted);
    }
    if (pattern.is_object()) {
        for (auto member = json.begin(); member != json.end(); ++member) {
            const auto known = pattern.find(member.key());
            if (known == pattern.end()) {
                throw Refused(path + '/' + member.key() + ": is not a known member");
            }
            if (known->is_structured() || typeWanted(*member, *known) != nullptr) {
                checkLike(*member, *known, path + '/' + member.key());
            }
        }
    }
    for (std::size_t i = 0; pattern.is_array() && i < json.size(); ++i) {
        checkLike(json[i], pattern.front(), path + '/' + std::to_string(i));
    }
}

std::int64_t now()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::max<std::int64_t>(
        0, std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
}

void count(std::int64_t *counter)
{
    *counter = *counter < MaximumNumber ? *counter + 1 : 0;
}

} // namespace bench
