// SPDX-License-Identifier: MIT
#include "bench/core/Flash.h"

#include "bench/core/LifeCycle.h"
#include "bench/core/Refused.h"

#include <algorithm>
#include <limits>
#include <thread>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

/// How often the drive is looked at while it is written: for being pulled out, and to note the progress.
constexpr std::chrono::milliseconds PollInterval(50);
constexpr std::int64_t TruncatedSize = 1000;
constexpr std::int64_t Never = std::numeric_limits<std::int64_t>::max();

/// True when `current` has been plugged in ever since it was `before`.
bool isStillThere(const Drive &current, const Drive &before)
{
    return current.plugged && current.powerUps == before.powerUps && current.pluggedAt == before.pluggedAt;
}

} // namespace

void Flash::run(const std::string &reportedSerial, std::int32_t chipset, const std::string &imageFile)
{
    try {
        findDrive(reportedSerial);
        checkImage(imageFile, chipset);
        begin();
        write();
        finish();
    } catch (const Refused &refused) {
        const std::string reason = refused.what();
        try {
            noteFailure(reason);
        } catch (const Refused &) {
            // The bench cannot be written any more; the reason why the flash failed matters more.
        }
        throw;
    }
}

/// Looks for the drive, and uses up the faults that a check of the image meets.
void Flash::findDrive(const std::string &reportedSerial)
{
    store.change([&] {
        drive = findReported(store.drives(), reportedSerial).value_or(Drive());
        require(!drive.serial.empty() && drive.isAttached(), "no such drive is attached");
        Drive changed = drive;
        if (useUp(&changed.faults, UsedUpBy::ImageCheck)) {
            store.update(changed);
        }
    });
}

void Flash::checkImage(const std::string &imageFile, std::int32_t chipset)
{
    require(drive.chipset == chipset,
        std::string("the drive's bridge is ") + bridgeName(drive.chipset) + ", not " + bridgeName(chipset));
    const std::string path = imagePath(store.directory(), imageFile);
    attempt(path, [&] {
        image = readImage(path);
        if (const Fault *const truncation = find(drive.faults, FaultKind::TruncatedImage)) {
            const std::int64_t limit = truncation->value.empty() ? TruncatedSize : truncation->number();
            readImage(path, static_cast<std::size_t>(std::min(limit, image.length)));
        }
        require(image.bridge == chipset,
            std::string("is for the bridge ") + bridgeName(image.bridge) + ", not " + bridgeName(chipset));
    });
}

/// From here on the flash counts as incomplete, and as this object's to write.
void Flash::begin()
{
    store.change([&] {
        const std::optional<Drive> current = store.find(drive.serial);
        require(current && isStillThere(*current, drive), "the drive was pulled out");
        require(current->state() != DriveState::Writing, "the drive is being written by another process");
        drive = *current;
        drive.incomplete = true;
        drive.flashFirmware.clear();
        drive.flashConfiguration.clear();
        drive.bytesWritten = 0;
        drive.bytesToWrite = image.length;
        drive.heartbeat = now();
        count(&drive.flashes);
        store.update(drive);
    });
    begun = true;
}

/// Writes at the drive's rate as far as no fault ends the writing.
void Flash::write()
{
    const Clock::time_point start = Clock::now();
    while (written < image.length) {
        const std::int64_t pulledOut = breakPosition(FaultKind::PulledOut);
        const std::int64_t failed = breakPosition(FaultKind::FlashError);
        const std::int64_t end = std::min({image.length, pulledOut, failed});
        const std::chrono::duration<double> needed(double(end) / double(drive.flashRate));
        const auto due = start + std::chrono::duration_cast<Clock::duration>(needed);
        std::this_thread::sleep_until(std::min(due, Clock::now() + PollInterval));
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        written = std::max(
            written, std::min(end, static_cast<std::int64_t>(elapsed.count() * double(drive.flashRate))));
        step([] {});
        if (written >= pulledOut) {
            breakOff(FaultKind::PulledOut, "the drive was pulled out");
        }
        if (written >= failed) {
            breakOff(FaultKind::FlashError, "the flash chip reports an error");
        }
    }
    if (find(drive.faults, FaultKind::VerifyError) != nullptr) {
        breakOff(FaultKind::VerifyError, "the flash chip does not hold what was written");
    }
}

/// How many bytes are written when that fault ends the writing; one beyond the end strikes at the end.
std::int64_t Flash::breakPosition(FaultKind fault) const
{
    const Fault *const set = find(drive.faults, fault);
    return set == nullptr ? Never : std::min(set->number(), image.length);
}

void Flash::finish()
{
    step([this] {
        drive.incomplete = false;
        drive.flashFirmware = image.firmware;
        drive.flashConfiguration = image.configuration;
        drive.heartbeat = 0;
        if (drive.catalogueModel().isFireWire()) {
            drive.runningFirmware = drive.flashFirmware;
            drive.runningConfiguration = drive.flashConfiguration;
        }
        drive.setLastUpdate(Drive::UpdateSucceeded);
    });
}

void Flash::breakOff(FaultKind fault, const std::string &reason)
{
    step([&] {
        useUp(&drive.faults, fault);
        if (fault == FaultKind::PulledOut) {
            powerDown(&drive);
        }
    });
    throw Refused(reason);
}

/// A change of the drive, in a transaction that also notes the progress and learns which faults were set
/// meanwhile. Refused when the drive was taken away from this object, or another drive has taken its place.
void Flash::step(const std::function<void()> &work)
{
    store.change([&] {
        const std::optional<Drive> current = store.find(drive.serial);
        require(current && isStillThere(*current, drive), "the drive was pulled out");
        require(current->flashes == drive.flashes, "another process has begun to write the drive");
        drive = *current;
        drive.bytesWritten = written;
        drive.heartbeat = now();
        work();
        store.update(drive);
    });
}

void Flash::noteFailure(const std::string &reason)
{
    store.change([&] {
        std::optional<Drive> current = store.find(drive.serial);
        // A drive that has taken the place of this one has not been flashed as often.
        if (current && current->flashes >= drive.flashes) {
            current->setLastUpdate("failed: " + reason);
            current->heartbeat = begun && current->flashes == drive.flashes ? 0 : current->heartbeat;
            store.update(*current);
        }
    });
}

} // namespace bench
