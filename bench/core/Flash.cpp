#include "bench/core/Flash.h"

#include "bench/core/Refused.h"

#include <algorithm>
#include <thread>

namespace bench {

namespace {

/// How often the drive is looked at while it is written: for being pulled out, and to note the progress.
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
        if (drive.serial.empty() || !drive.isAttached()) {
            throw Refused("no such drive is attached");
        }
        Drive changed = drive;
        useUp(&changed.faults, UsedUpBy::ImageCheck);
        if (changed.faults.size() != drive.faults.size()) {
            table.update(changed);
        }
    });
}

void Flash::readImage(const std::string &imageFile, std::int32_t chipset)
{
    if (drive.chipset != chipset) {
        throw Refused(std::string("the drive's bridge is ") + bridgeName(drive.chipset) + ", not "
            + bridgeName(chipset));
    }
    try {
        image = FirmwareImage::read(imageFile);
        const Fault *const truncation = findFault(drive.faults, FaultKind::TruncatedImage);
        if (truncation != nullptr) {
            const std::int64_t limit = truncation->number > 0 ? truncation->number : TruncatedSize;
            const std::string whole = image.encode();
            image = FirmwareImage::decode(
                whole.substr(0, std::min(static_cast<std::size_t>(limit), whole.size() - 1)));
        }
    } catch (const Refused &refused) {
        throw Refused(imageFile + ": " + refused.what());
    }
    if (image.bridge != chipset) {
        throw Refused(
            imageFile + ": is for the bridge " + bridgeName(image.bridge) + ", not " + bridgeName(chipset));
    }
    total = static_cast<std::int64_t>(image.firmware.size() + image.configuration.size());
}

/// From here on the flash counts as incomplete, and as this object's to write.
void Flash::begin()
{
    store.change([&] {
        DriveTable table(store);
        Drive current = table.get(drive.serial);
        if (current.state() == DriveState::Writing) {
            throw Refused("the drive is being written by another process");
        }
        if (!isStillThere(current, drive)) {
            throw Refused("the drive was pulled out");
        }
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
    lookAtDrive();
    const Clock::time_point start = Clock::now();
    for (const FlashChip::Part &part : FlashChip::parts(image)) {
        for (std::size_t offset = 0; offset < part.payload.size(); offset += FlashChip::PageSize) {
            programPage(part.payloadStart() + offset, part.payload.substr(offset, FlashChip::PageSize));
            const std::chrono::duration<double> seconds(double(written) / double(drive.flashRate));
            waitUntil(start + std::chrono::duration_cast<Clock::duration>(seconds));
        }
    }
}

void Flash::programPage(std::size_t position, const std::string &data)
{
    const std::optional<Break> fault = breakWithin(data.size());
    const std::size_t length = fault ? static_cast<std::size_t>(fault->position - written) : data.size();
    chip.program(position, data.substr(0, length));
    writeChip(position, length);
    written += static_cast<std::int64_t>(length);
    if (fault) {
        breakOff(fault->fault);
    }
}

void Flash::writeChip(std::size_t position, std::size_t length)
{
    withDrive(
        [&](DriveTable &table, Drive &current) {
            table.writeChip(current, position, chip.content().substr(position, length));
        },
        Durability::Relaxed);
}

void Flash::verify()
{
    store.read([this] { chip = DriveTable(store).chip(drive); });
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
    changeDrive(
        [this](DriveTable &table, Drive &current) {
            for (const FlashChip::Part &part : FlashChip::parts(image)) {
                table.writeChip(current, part.region.start, part.descriptor());
            }
            current.incomplete = false;
            current.flashFirmware = image.firmwareVersion;
            current.flashConfiguration = image.configurationRevision;
            current.bytesWritten = written;
            current.heartbeat = 0;
            if (current.catalogueModel().isFireWire()) {
                current.runningFirmware = current.flashFirmware;
                current.runningConfiguration = current.flashConfiguration;
                current.bootRom = false;
            }
            current.setLastUpdate(Drive::UpdateSucceeded);
        },
        Durability::Lasting);
}

/// The first fault that ends the writing before `length` more bytes; one beyond the end strikes at the end.
std::optional<Flash::Break> Flash::breakWithin(std::size_t length) const
{
    std::optional<Break> first;
    for (const FaultKind kind : {FaultKind::PulledOut, FaultKind::FlashError}) {
        const Fault *const fault = findFault(drive.faults, kind);
        if (fault == nullptr) {
            continue;
        }
        const std::int64_t position = std::max(written, std::min(fault->number, total));
        const bool isDue = std::min(position, total - 1) < written + static_cast<std::int64_t>(length);
        if (isDue && (!first || position < first->position)) {
            first = Break{kind, position};
        }
    }
    return first;
}

void Flash::breakOff(FaultKind fault)
{
    changeDrive(
        [&](DriveTable &, Drive &current) {
            current.bytesWritten = written;
            useUp(&current.faults, fault);
            if (fault == FaultKind::PulledOut) {
                current.plugged = false;
                current.mounted = false;
                current.unpluggedAt = now();
            }
        },
        Durability::Lasting);
    throw Refused(fault == FaultKind::PulledOut ? "the drive was pulled out"
            : fault == FaultKind::FlashError    ? "the flash chip reports an error"
                                                : "the flash chip does not hold what was written");
}

void Flash::waitUntil(Clock::time_point due)
{
    Clock::time_point moment = Clock::now();
    do {
        if (moment - lastLook >= PollInterval) {
            lookAtDrive();
        }
        std::this_thread::sleep_until(std::min(due, lastLook + PollInterval));
        moment = Clock::now();
    } while (moment < due);
}

/// Notes the progress, and learns which faults were set meanwhile.
void Flash::lookAtDrive()
{
    lastLook = Clock::now();
    changeDrive(
        [this](DriveTable &, Drive &current) {
            current.bytesWritten = written;
            current.heartbeat = now();
        },
        Durability::Relaxed);
}

/// Runs the work unless the drive was taken away from this object. Another drive may have taken its place.
void Flash::withDrive(
    const std::function<void(DriveTable &table, Drive &current)> &work, Durability durability)
{
    store.change(
        [&] {
            DriveTable table(store);
            std::optional<Drive> current = table.find(drive.serial);
            if (!current || !isStillThere(*current, drive)) {
                throw Refused("the drive was pulled out");
            }
            if (current->flashes != drive.flashes) {
                throw Refused("another process has begun to write the drive");
            }
            work(table, *current);
        },
        durability);
}

void Flash::changeDrive(
    const std::function<void(DriveTable &table, Drive &current)> &work, Durability durability)
{
    withDrive(
        [&](DriveTable &table, Drive &current) {
            work(table, current);
            table.update(current);
            drive = current;
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
