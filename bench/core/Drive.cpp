#include "bench/core/Drive.h"

#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <chrono>
#include <ctime>

namespace bench {

namespace {

constexpr std::size_t MaximumSerialLength = 80;
/// A flash whose writer was not seen for so long is not being written any more.
constexpr std::int64_t HeartbeatTimeout = 1000;

/// Refuses numbers outside their limits.
struct LimitCheck
{
    template <typename Number>
    void number(const char *name, Number value, Number minimum, Number maximum)
    {
        if (value < minimum || value > maximum) {
            throw Refused(std::string("invalid drive: ") + name + " must be a whole number from "
                + std::to_string(minimum) + " to " + std::to_string(maximum));
        }
    }
    void flag(const char *, bool) { }
    void bytes(const char *, const std::string &) { }
    void text(const char *, const std::string &) { }
};

} // namespace

const char *stateText(DriveState state)
{
    switch (state) {
    case DriveState::Unplugged:
        return "unplugged";
    case DriveState::Silent:
        return "does not answer";
    case DriveState::Writing:
        return "being written";
    case DriveState::BootRom:
        return "boot ROM";
    case DriveState::RestartNeeded:
        return "restart needed";
    case DriveState::Ready:
        break;
    }
    return "ready";
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
    for (const std::string &version : {drive.flashFirmware, drive.flashConfiguration}) {
        if (version.size() > FirmwareImage::MaximumText) {
            throw Refused("invalid drive: a version has at most " + std::to_string(FirmwareImage::MaximumText)
                + " characters, this one " + std::to_string(version.size()));
        }
    }
    LimitCheck limits;
    visitFields(drive, limits);
    for (const Fault &fault : drive.faults) {
        check(fault);
    }
}

std::int64_t now()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

} // namespace bench
