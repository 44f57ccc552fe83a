#include "bench/core/FlashRun.h"

#include "bench/core/Bench.h"
#include "bench/core/Files.h"

#include <algorithm>
#include <thread>

namespace bench {

namespace {

/// How often the drive is looked at while it is written: for being pulled out, and to note the progress.
constexpr std::chrono::milliseconds LookInterval(50);
constexpr std::int64_t TruncatedSize = 1000;

} // namespace

FlashRun::FlashRun(Bench *owner) : bench(owner) { }

bool FlashRun::start(
    const QString &reportedSerial, std::int32_t chipset, const QString &imageFile, QString *reason)
{
    if (!bench->exists(reason)) {
        return false;
    }
    const FileLock lock(bench->lockFile(), FileLock::Exclusive);
    if (!bench->lockForChange(lock, reason)) {
        return false;
    }
    Drive drive;
    if (!bench->findReported(reportedSerial, &drive)) {
        *reason = QStringLiteral("no such drive is attached");
        return false;
    }
    if (drive.chipset != chipset) {
        *reason = QStringLiteral("the drive's bridge is %1, not %2")
                      .arg(bridgeName(drive.chipset), bridgeName(chipset));
        return false;
    }

    std::int64_t limit = FirmwareImage::MaximumFile;
    const Fault *const truncation = findFault(drive.faults, "truncated-image");
    const bool truncated = truncation != nullptr;
    if (truncated) {
        limit = truncation->number > 0 ? truncation->number : TruncatedSize;
    }
    const bool hadFaults = truncated || findFault(drive.faults, "wrong-image") != nullptr;
    drive.faultHadEffect("truncated-image");
    drive.faultHadEffect("wrong-image");
    bool fits = FirmwareImage::read(imageFile, &image, reason, limit);
    if (fits && truncated) {
        fits = FirmwareImage::read(imageFile, &image, reason, image.encode().size() - 1);
    }
    if (!fits) {
        *reason = imageFile + QLatin1Char(' ') + *reason;
    } else if (image.bridge != chipset) {
        fits = false;
        *reason = QStringLiteral("%1 is for the bridge %2").arg(imageFile, bridgeName(image.bridge));
    }
    if (!fits) {
        QString ignored;
        if (hadFaults) {
            bench->writeDrive(drive, &ignored);
        }
        return false;
    }

    serial = drive.serial;
    chip = std::make_unique<FlashChip>(bench->chipFile(serial), FlashChip::Write);
    if (!chip->isOpen()) {
        *reason = QStringLiteral("%1: %2").arg(bench->chipFile(serial), chip->reason());
        return false;
    }
    for (const auto &part : {std::make_pair(FlashChip::Firmware, image.firmware),
             std::make_pair(FlashChip::Configuration, image.configuration)}) {
        // The first page of a part describes it and comes last.
        const int firstPage = part.first.start / FlashChip::PageSize + 1;
        for (int offset = 0; offset < part.second.size(); offset += FlashChip::PageSize) {
            chunks.append(
                {firstPage + offset / FlashChip::PageSize, part.second.mid(offset, FlashChip::PageSize)});
        }
        total += part.second.size();
    }
    powerUps = drive.powerUps;
    pluggedAt = drive.pluggedAt;
    rate = drive.flashRate;
    drive.torn = true;
    drive.flashFirmware.clear();
    drive.flashConfiguration.clear();
    drive.bytesWritten = 0;
    drive.bytesToWrite = total;
    return bench->writeDrive(drive, reason);
}

bool FlashRun::write(QString *reason)
{
    return erase(reason) && program(reason) && verify(reason) && finish(reason);
}

bool FlashRun::erase(QString *reason)
{
    for (int sector = 0; sector < FlashChip::Size / FlashChip::SectorSize; ++sector) {
        if (!chip->eraseSector(sector)) {
            *reason = chip->reason();
            return false;
        }
    }
    return true;
}

bool FlashRun::program(QString *reason)
{
    if (!lookAtDrive(reason)) {
        return false;
    }
    const Clock::time_point begin = Clock::now();
    for (const Chunk &chunk : chunks) {
        const std::int64_t next = written + chunk.data.size();
        // A fault beyond the end strikes at the end.
        const bool errs = errorAt >= 0 && std::min(errorAt, total - 1) < next;
        const bool goes = pulledOutAt >= 0 && std::min(pulledOutAt, total - 1) < next;
        QByteArray data = chunk.data;
        if (errs || goes) {
            const std::int64_t end = errs && goes ? std::min(errorAt, pulledOutAt)
                : errs                            ? errorAt
                                                  : pulledOutAt;
            data.truncate(static_cast<int>(std::max<std::int64_t>(0, std::min(end, total) - written)));
        }
        if (!chip->programPage(chunk.page, data)) {
            *reason = chip->reason();
            return false;
        }
        written += data.size();
        if (goes && (!errs || pulledOutAt <= errorAt)) {
            return breakOff("pulled-out", QStringLiteral("the drive was pulled out"), true, reason);
        }
        if (errs) {
            return breakOff("flash-error", QStringLiteral("the flash chip reports an error"), false, reason);
        }
        const auto due =
            begin + std::chrono::nanoseconds(static_cast<std::int64_t>(double(written) * 1e9 / double(rate)));
        if (!waitUntil(due, reason)) {
            return false;
        }
    }
    return true;
}

bool FlashRun::waitUntil(Clock::time_point due, QString *reason)
{
    Clock::time_point now = Clock::now();
    do {
        if (now - lastLook >= LookInterval && !lookAtDrive(reason)) {
            return false;
        }
        std::this_thread::sleep_until(std::min(due, lastLook + LookInterval));
        now = Clock::now();
    } while (now < due);
    return true;
}

bool FlashRun::verify(QString *reason)
{
    bool same = true;
    for (const Chunk &chunk : chunks) {
        same = same
            && chip->read(chunk.page * FlashChip::PageSize, static_cast<int>(chunk.data.size()))
                == chunk.data;
    }
    if (!same || verifyFails) {
        return breakOff(
            "verify-error", QStringLiteral("the flash chip does not hold what was written"), false, reason);
    }
    return true;
}

bool FlashRun::finish(QString *reason)
{
    return bench->changeDrive(
        serial,
        [this](Drive *drive, QString *why) {
            if (!isStillThere(*drive)) {
                *why = QStringLiteral("the drive was pulled out");
                return false;
            }
            if (!chip->describe(FlashChip::Firmware, image.firmwareVersion, image.firmware)
                || !chip->describe(
                    FlashChip::Configuration, image.configurationRevision, image.configuration)) {
                *why = chip->reason();
                return false;
            }
            drive->torn = false;
            drive->flashFirmware = image.firmwareVersion;
            drive->flashConfiguration = image.configurationRevision;
            drive->bytesWritten = written;
            if (drive->catalogueModel().isFireWire()) {
                drive->runningFirmware = drive->flashFirmware;
                drive->runningConfiguration = drive->flashConfiguration;
                drive->bootRom = false;
            }
            return true;
        },
        reason);
}

bool FlashRun::lookAtDrive(QString *reason)
{
    lastLook = Clock::now();
    return bench->changeDrive(
        serial,
        [this](Drive *drive, QString *why) {
            if (!isStillThere(*drive)) {
                *why = QStringLiteral("the drive was pulled out");
                return false;
            }
            const Fault *const error = findFault(drive->faults, "flash-error");
            const Fault *const pulledOut = findFault(drive->faults, "pulled-out");
            errorAt = error == nullptr ? -1 : std::max<std::int64_t>(0, error->number);
            pulledOutAt = pulledOut == nullptr ? -1 : std::max<std::int64_t>(0, pulledOut->number);
            verifyFails = findFault(drive->faults, "verify-error") != nullptr;
            drive->bytesWritten = written;
            return true;
        },
        reason);
}

bool FlashRun::breakOff(const char *fault, const QString &why, bool unplugged, QString *reason)
{
    QString ignored;
    bench->changeDrive(
        serial,
        [&](Drive *drive, QString *) {
            drive->bytesWritten = written;
            drive->faultHadEffect(fault);
            if (unplugged) {
                drive->plugged = false;
                drive->mounted = false;
            }
            return true;
        },
        &ignored);
    *reason = why;
    return false;
}

bool FlashRun::isStillThere(const Drive &drive) const
{
    return drive.plugged && drive.powerUps == powerUps && drive.pluggedAt == pluggedAt;
}

} // namespace bench
