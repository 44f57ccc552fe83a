#include "bench/core/Discovery.h"

#include "bench/core/FirmwareImage.h"

#include <QDateTime>
#include <QHash>

#include <algorithm>

namespace bench {

namespace {

constexpr std::int32_t StatusUndetermined = 0;
constexpr std::int32_t StatusUpdateRequired = 1;
constexpr std::int32_t StatusUpToDate = 2;
constexpr std::int32_t StatusUnknown = 3;

struct Versions
{
    QString firmware;
    QString configuration;
};

/// What the images beside the program offer. Each image is read once.
class Offers
{
public:
    explicit Offers(const QString &folder) : imageFolder(folder) { }

    /// The versions in the model's image, or the catalogue's without a usable one.
    Versions of(const Model &model)
    {
        const auto known = read.constFind(model.name);
        if (known != read.constEnd()) {
            return *known;
        }
        Versions versions{model.newestFirmware, model.newestConfiguration};
        FirmwareImage image;
        QString reason;
        if (FirmwareImage::read(imageFolder + QLatin1Char('/') + model.imageName(), &image, &reason)) {
            versions = {image.firmwareVersion, image.configurationRevision};
        }
        read.insert(model.name, versions);
        return versions;
    }

private:
    QString imageFolder;
    QHash<QString, Versions> read;
};

/// A model whose bridge is not `chipset`: where the fault "wrong-image" has its image from.
const Model &modelWithOtherBridge(std::int32_t chipset)
{
    return models().first().chipset != chipset ? models().first() : models().last();
}

std::int64_t numberOf(const Drive &drive, const char *fault)
{
    const Fault *const found = findFault(drive.faults, fault);
    return found == nullptr ? 0 : found->number;
}

bool isSettled(const Drive &drive)
{
    return findFault(drive.faults, "never-settles") == nullptr
        && drive.queries >= numberOf(drive, "settle-queries")
        && QDateTime::currentMSecsSinceEpoch() - drive.pluggedAt >= numberOf(drive, "settle-time");
}

std::int32_t statusOf(const Drive &drive, const QString &running, const QString &offered)
{
    if (!isSettled(drive)) {
        return StatusUndetermined;
    }
    if (drive.torn || drive.bootRom || drive.chipset == 0) {
        return StatusUnknown;
    }
    return running == offered ? StatusUpToDate : StatusUpdateRequired;
}

DriveRecord describe(const Drive &drive, const Versions &offered)
{
    const Model &model = drive.catalogueModel();
    DriveRecord record;
    record.auxiliaryText1 = model.isFireWire() ? QStringLiteral("FireWire") : QStringLiteral("USB");
    record.productId = model.productId;
    record.modelName = model.name;
    record.serialNumber = drive.reportedSerial;
    record.vendorId = model.vendorId;
    record.auxiliaryText2 = drive.torn ? QString() : drive.runningConfiguration;
    record.firmwareVersion = drive.torn ? QString() : drive.runningFirmware;
    record.firmwareFileName = model.imageName();
    record.newFirmwareVersion = offered.firmware;
    record.chipsetType = drive.chipset;
    record.firmwareStatus = statusOf(drive, drive.runningFirmware, offered.firmware);
    record.configurationStatus = statusOf(drive, drive.runningConfiguration, offered.configuration);

    if (findFault(drive.faults, "wrong-image") != nullptr) {
        record.firmwareFileName = modelWithOtherBridge(drive.chipset).imageName();
    }
    for (const Fault &fault : drive.faults) {
        if (fault.name == QLatin1String("firmware-status")) {
            record.firmwareStatus = static_cast<std::int32_t>(fault.number);
        } else if (fault.name == QLatin1String("configuration-status")) {
            record.configurationStatus = static_cast<std::int32_t>(fault.number);
        } else if (fault.name == QLatin1String("chipset")) {
            record.chipsetType = static_cast<std::int32_t>(fault.number);
        } else if (fault.name == QLatin1String("vendor-id")) {
            record.vendorId = static_cast<std::uint16_t>(fault.number);
        } else if (fault.name == QLatin1String("product-id")) {
            record.productId = static_cast<std::uint16_t>(fault.number);
        } else if (fault.name == QLatin1String("duplicate-serial") && !fault.text.isEmpty()) {
            record.serialNumber = fault.text;
        } else if (fault.name == QLatin1String("text")) {
            QString *const fields[] = {&record.auxiliaryText1, &record.modelName, &record.serialNumber,
                &record.auxiliaryText2, &record.firmwareVersion, &record.firmwareFileName,
                &record.newFirmwareVersion};
            *fields[faultFields().indexOf(fault.field)] = fault.text;
        }
    }
    return record;
}

bool isSeen(const Drive &drive)
{
    return drive.plugged && drive.answers;
}

} // namespace

QVector<DriveRecord> recordsOf(const QVector<Drive> &drives, const QString &imageFolder)
{
    QVector<DriveRecord> records;
    Offers offers(imageFolder);
    for (const Drive &drive : drives) {
        records.append(describe(drive, offers.of(drive.catalogueModel())));
    }
    return records;
}

QVector<DriveRecord> recordsOfQuery(const QVector<Drive> &drives, const QString &imageFolder)
{
    QVector<Drive> reported;
    for (const Drive &drive : drives) {
        if (!isSeen(drive)) {
            continue;
        }
        reported.append(drive);
        const Fault *const duplicate = findFault(drive.faults, "duplicate-serial");
        if (duplicate != nullptr && duplicate->text.isEmpty()) {
            reported.append(drive);
        }
    }
    return recordsOf(reported, imageFolder);
}

std::int64_t probeMilliseconds(const QVector<Drive> &drives)
{
    std::int64_t milliseconds = 0;
    for (const Drive &drive : drives) {
        if (isSeen(drive)) {
            milliseconds += std::max<std::int64_t>(0, numberOf(drive, "slow-probe"));
        }
    }
    return milliseconds;
}

bool isChangedByQuery(const Drive &drive)
{
    if (!isSeen(drive)) {
        return false;
    }
    if (drive.queries < numberOf(drive, "settle-queries")) {
        return true;
    }
    return std::any_of(drive.faults.begin(), drive.faults.end(), [&drive](const Fault &fault) {
        const bool settling =
            fault.name == QLatin1String("settle-queries") || fault.name == QLatin1String("settle-time");
        return fault.once && (actsOnQuery(fault) || (settling && isSettled(drive)));
    });
}

void countQuery(Drive *drive)
{
    if (isSettled(*drive)) {
        drive->faultHadEffect("settle-queries");
        drive->faultHadEffect("settle-time");
    } else {
        ++drive->queries;
    }
    QVector<Fault> left;
    for (const Fault &fault : drive->faults) {
        if (!fault.once || !actsOnQuery(fault)) {
            left.append(fault);
        }
    }
    drive->faults = left;
}

} // namespace bench
