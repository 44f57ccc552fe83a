#include "bench/core/Flash.h"

#include "bench/core/Refused.h"

#include <algorithm>
#include <limits>
#include <thread>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

/// How often the drive is looked at while the chip is slow: for being pulled out, and to note the progress.
constexpr std::chrono::milliseconds PollInterval(50);
constexpr std::int64_t TruncatedSize = 1000;

/// True when `current` has been plugged in ever since it was `before`.
bool isStillThere(const Drive &current, const Drive &before)
{
    return current.plugged && current.powerUps == before.powerUps && current.pluggedAt == before.pluggedAt;
}

} // namespace

void Flash::run(const std::string &reportedSerial, std::int32_t chipset, const std::string &imageFile)
{
    try {
        find(reportedSerial);
        readImage(imageFile, chipset);
        begin();
        erase();
        program();
        verify();
        finish();
    } catch (const Refused &refused) {
        noteFailure(refused.what());
        throw;
    }
}

/// Looks for the drive, and uses up the faults that a check of the image meets.
void Flash::find(const std::string &reportedSerial)
{
    store.change([&] {
        DriveTable table(store);
        drive = table.findReported(reportedSerial).value_or(Drive());
        require(!drive.serial.empty() && drive.isAttached(), "no such drive is attached");
        Drive changed = drive;
        if (useUp(&changed.faults, UsedUpBy::ImageCheck)) {
            table.update(changed);
        }
    });
}

void Flash::readImage(const std::string &imageFile, std::int32_t chipset)
{
    require(drive.chipset == chipset,
        std::string("the drive's bridge is ") + bridgeName(drive.chipset) + ", not " + bridgeName(chipset));
    try {
        image = FirmwareImage::read(imageFile);
        if (const Fault *const truncation = findFault(drive.faults, FaultKind::TruncatedImage)) {
            const auto limit =
                static_cast<std::size_t>(truncation->hasValue() ? truncation->number : TruncatedSize);
            FirmwareImage::read(imageFile, std::min(limit, image.encode().size() - 1));
        }
    } catch (const Refused &refused) {
        throw Refused(imageFile + ": " + refused.what());
    }
    require(image.bridge == chipset,
        imageFile + ": is for the bridge " + bridgeName(image.bridge) + ", not " + bridgeName(chipset));
    total = static_cast<std::int64_t>(image.firmware.size() + image.configuration.size());
}

/// From here on the flash counts as incomplete, and as this object's to write.
void Flash::begin()
{
    store.change([&] {
        DriveTable table(store);
        Drive current = table.get(drive.serial);
        require(current.state() != DriveState::Writing, "the drive is being written by another process");
        require(isStillThere(current, drive), "the drive was pulled out");
        current.incomplete = true;
        current.flashFirmware.clear();
        current.flashConfiguration.clear();
        current.bytesWritten = 0;
        current.bytesToWrite = total;
        current.heartbeat = now();
        ++current.flashes;
        chip = table.chip(current);
        table.replaceChip(current, chip);
        table.update(current);
        drive = current;
    });
    begun = true;
}

void Flash::erase()
{
    for (std::size_t sector = 0; sector < FlashChip::Size / FlashChip::SectorSize; ++sector) {
        chip.eraseSector(sector);
        writeChip(sector * FlashChip::SectorSize, FlashChip::SectorSize);
    }
}

void Flash::program()
{
    const Clock::time_point start = Clock::now();
    for (const FlashChip::Part &part : FlashChip::parts(image)) {
        for (std::size_t offset = 0; offset < part.payload.size(); offset += FlashChip::PageSize) {
            programPage(part.payloadStart() + offset, part.payload.substr(offset, FlashChip::PageSize));
            const std::chrono::duration<double> seconds(double(written) / double(drive.flashRate));
            waitUntil(start + std::chrono::duration_cast<Clock::duration>(seconds));
        }
    }
}

/// Programs the page as far as no fault ends the writing in it.
void Flash::programPage(std::size_t position, const std::string &data)
{
    const std::int64_t end = written + static_cast<std::int64_t>(data.size());
    const std::int64_t pulledOut = breakPosition(FaultKind::PulledOut);
    const std::int64_t failed = breakPosition(FaultKind::FlashError);
    const std::int64_t first = std::min(pulledOut, failed);
    const bool isDue = first < end || (first == end && end == total);
    const auto length = static_cast<std::size_t>(std::min(first, end) - written);
    chip.program(position, data.substr(0, length));
    writeChip(position, length);
    written += static_cast<std::int64_t>(length);
    if (isDue) {
        breakOff(first == pulledOut ? FaultKind::PulledOut : FaultKind::FlashError);
    }
}

/// How many bytes are written when that fault ends the writing; one beyond the end strikes at the end.
std::int64_t Flash::breakPosition(FaultKind fault) const
{
    const Fault *const set = findFault(drive.faults, fault);
    return set == nullptr ? std::numeric_limits<std::int64_t>::max()
                          : std::clamp(set->number, written, total);
}

void Flash::writeChip(std::size_t position, std::size_t length)
{
    step([&](DriveTable &table) {
        table.writeChip(drive, position, chip.content().substr(position, length));
    });
}

void Flash::verify()
{
    chip = store.read([this] { return DriveTable(store).chip(drive); });
    const auto parts = FlashChip::parts(image);
    const bool isSame = std::all_of(parts.begin(), parts.end(), [this](const FlashChip::Part &part) {
        return chip.content().compare(part.payloadStart(), part.payload.size(), part.payload) == 0;
    });
    if (!isSame || findFault(drive.faults, FaultKind::VerifyError) != nullptr) {
        breakOff(FaultKind::VerifyError);
    }
}

void Flash::finish()
{
    step(
        [this](DriveTable &table) {
            for (const FlashChip::Part &part : FlashChip::parts(image)) {
                table.writeChip(drive, part.region.start, part.descriptor());
            }
            drive.incomplete = false;
            drive.flashFirmware = image.firmwareVersion;
            drive.flashConfiguration = image.configurationRevision;
            drive.heartbeat = 0;
            if (drive.catalogueModel().isFireWire()) {
                drive.runningFirmware = drive.flashFirmware;
                drive.runningConfiguration = drive.flashConfiguration;
                drive.bootRom = false;
            }
            drive.setLastUpdate(Drive::UpdateSucceeded);
        },
        Durability::Lasting);
}

void Flash::breakOff(FaultKind fault)
{
    step(
        [&](DriveTable &) {
            useUp(&drive.faults, fault);
            if (fault == FaultKind::PulledOut) {
                drive.plugged = false;
                drive.mounted = false;
                drive.unpluggedAt = now();
            }
        },
        Durability::Lasting);
    throw Refused(fault == FaultKind::PulledOut ? "the drive was pulled out"
            : fault == FaultKind::FlashError    ? "the flash chip reports an error"
                                                : "the flash chip does not hold what was written");
}

void Flash::waitUntil(Clock::time_point due)
{
    for (auto next = Clock::now() + PollInterval; next < due; next += PollInterval) {
        std::this_thread::sleep_until(next);
        step([](DriveTable &) {});
    }
    std::this_thread::sleep_until(due);
}

/// A change of the drive, in a transaction that also notes the progress and learns which faults were set
/// meanwhile. Refused when the drive was taken away from this object, or another drive has taken its place.
void Flash::step(const std::function<void(DriveTable &table)> &work, Durability durability)
{
    store.change(
        [&] {
            DriveTable table(store);
            const std::optional<Drive> current = table.find(drive.serial);
            require(current && isStillThere(*current, drive), "the drive was pulled out");
            require(current->flashes == drive.flashes, "another process has begun to write the drive");
            drive = *current;
            drive.bytesWritten = written;
            drive.heartbeat = now();
            work(table);
            table.update(drive);
        },
        durability);
}

void Flash::noteFailure(const std::string &reason)
{
    store.change([&] {
        DriveTable table(store);
        std::optional<Drive> current = table.find(drive.serial);
        // A drive that has taken the place of this one has not been flashed as often.
        if (current && current->flashes >= drive.flashes) {
            current->setLastUpdate("failed: " + reason);
            current->heartbeat = begun && current->flashes == drive.flashes ? 0 : current->heartbeat;
            table.update(*current);
        }
    });
}

} // namespace bench
