#include "bench/core/Drive.h"

#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <chrono>
#include <ctime>
#include <limits>

namespace bench {

namespace {

constexpr std::size_t MaximumSerialLength = 80;
/// A flash whose writer was not seen for so long is not being written any more.
constexpr std::int64_t HeartbeatTimeout = 1000;

// In the order of the enumerators.
constexpr const char *StateTexts[] = {
    "unplugged", "does not answer", "being written", "boot ROM", "restart needed", "ready"};

constexpr std::array<Field<Drive>, 24> DriveFields = {{
    {"serial", &Drive::serial},
    {"model", &Drive::model},
    {"chipset", &Drive::chipset, std::numeric_limits<std::int32_t>::min(),
        std::numeric_limits<std::int32_t>::max()},
    {"plugged", &Drive::plugged},
    {"answers", &Drive::answers},
    {"reportedSerial", &Drive::reportedSerial},
    {"runningFirmware", &Drive::runningFirmware},
    {"runningConfiguration", &Drive::runningConfiguration},
    {"bootRom", &Drive::bootRom},
    {"flashFirmware", &Drive::flashFirmware},
    {"flashConfiguration", &Drive::flashConfiguration},
    {"incomplete", &Drive::incomplete},
    {"bytesWritten", &Drive::bytesWritten},
    {"bytesToWrite", &Drive::bytesToWrite},
    {"mounted", &Drive::mounted},
    {"flashRate", &Drive::flashRate, 1, Drive::MaximumFlashRate},
    {"powerUps", &Drive::powerUps},
    {"pluggedAt", &Drive::pluggedAt},
    {"unpluggedAt", &Drive::unpluggedAt},
    {"queries", &Drive::queries},
    {"flashes", &Drive::flashes},
    {"heartbeat", &Drive::heartbeat},
    {"lastUpdate", &Drive::lastUpdate, 0, 0, true},
    {"lastUpdateAt", &Drive::lastUpdateAt},
}};

} // namespace

const char *stateText(DriveState state)
{
    return StateTexts[static_cast<std::size_t>(state)];
}

const Model &Drive::catalogueModel() const
{
    const Model *const found = findModel(model);
    if (found == nullptr) {
        throw Refused("there is no model \"" + escaped(model) + "\"; drive-bench models lists them");
    }
    return *found;
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
        return now() - heartbeat <= HeartbeatTimeout ? DriveState::Writing : DriveState::BootRom;
    }
    const bool isCurrent =
        !bootRom && runningFirmware == flashFirmware && runningConfiguration == flashConfiguration;
    return isCurrent ? DriveState::Ready : DriveState::RestartNeeded;
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
    if (lastUpdate.empty()) {
        return {};
    }
    const auto seconds = static_cast<std::time_t>(lastUpdateAt / 1000);
    std::tm local = {};
    char time[8] = {};
    std::strftime(time, sizeof time, "%H:%M", ::localtime_r(&seconds, &local));
    return lastUpdate + ", at " + time;
}

void Drive::setLastUpdate(const std::string &outcome)
{
    lastUpdate = outcome;
    lastUpdateAt = now();
}

void check(const Drive &drive)
{
    if (drive.serial.empty() || drive.serial.size() > MaximumSerialLength) {
        throw Refused("a serial number has 1 to " + std::to_string(MaximumSerialLength)
            + " characters, this one " + std::to_string(drive.serial.size()));
    }
    drive.catalogueModel();
    for (const std::string *version : {&drive.flashFirmware, &drive.flashConfiguration}) {
        if (version->size() > FirmwareImage::MaximumText) {
            throw Refused("invalid drive: a version has at most " + std::to_string(FirmwareImage::MaximumText)
                + " characters, this one " + std::to_string(version->size()));
        }
    }
    for (const Field<Drive> &field : DriveFields) {
        const auto *const number = std::get_if<std::int64_t Drive::*>(&field.member);
        if (number != nullptr && (drive.**number < field.minimum || drive.**number > field.maximum)) {
            throw Refused(std::string("invalid drive: ") + field.name + " must be "
                + wholeNumber(field.minimum, field.maximum));
        }
    }
    for (const Fault &fault : drive.faults) {
        check(fault);
    }
}

const std::array<Field<Drive>, 24> &driveFields()
{
    return DriveFields;
}

std::int64_t now()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

} // namespace bench
