#include "bench/core/Discovery.h"

#include "bench/core/DriveTable.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <unordered_map>
#include <utility>

namespace bench {

namespace {

/// What discovery reports for a status that it cannot determine for good.
constexpr std::int32_t StatusUnknown = 3;

struct Versions
{
    std::string firmware;
    std::string configuration;
};

/// The versions in the model's image, or the catalogue's without a usable one.
Versions versionsOnOffer(const Model &model, const std::string &imageDirectory)
{
    try {
        const FirmwareImage image = FirmwareImage::readHeader(imageDirectory + '/' + model.imageName());
        return {image.firmwareVersion, image.configurationRevision};
    } catch (const Refused &) {
        return {model.newestFirmware, model.newestConfiguration};
    }
}

/// A model whose bridge is not `chipset`: where the fault "wrong-image" has its image from.
const Model &modelWithOtherBridge(std::int32_t chipset)
{
    return models().front().chipset != chipset ? models().front() : models().back();
}

bool isSettled(const Drive &drive)
{
    // Without the fault the clock does not matter: it may have been set back, or be another computer's.
    const std::int64_t settleTime = numberOf(drive.faults, FaultKind::SettleTime);
    return findFault(drive.faults, FaultKind::NeverSettles) == nullptr
        && drive.queries >= numberOf(drive.faults, FaultKind::SettleQueries)
        && (settleTime == 0 || now() - drive.pluggedAt >= settleTime);
}

std::int32_t statusOf(const Drive &drive, const std::string &running, const std::string &offered)
{
    if (!isSettled(drive)) {
        return Status::NotYetDetermined;
    }
    if (drive.incomplete || drive.bootRom || drive.chipset == Chipset::NotSupported) {
        return StatusUnknown;
    }
    return running == offered ? Status::UpToDate : Status::UpdateRequired;
}

void applyFault(const Fault &fault, DeviceInfo *record)
{
    switch (fault.kind) {
    case FaultKind::FirmwareStatus:
        record->firmwareStatus = static_cast<std::int32_t>(fault.number);
        break;
    case FaultKind::ConfigurationStatus:
        record->configurationStatus = static_cast<std::int32_t>(fault.number);
        break;
    case FaultKind::Chipset:
        record->chipsetType = static_cast<std::int32_t>(fault.number);
        break;
    case FaultKind::VendorId:
        record->vendorId = static_cast<std::uint16_t>(fault.number);
        break;
    case FaultKind::ProductId:
        record->productId = static_cast<std::uint16_t>(fault.number);
        break;
    case FaultKind::DuplicateSerial:
        record->serialNumber = fault.text.empty() ? record->serialNumber : fault.text;
        break;
    case FaultKind::Text:
        record->*fault.field->member = fault.text;
        break;
    default:
        break;
    }
}

DeviceInfo recordOf(const Drive &drive, const Versions &offered)
{
    const Model &model = drive.catalogueModel();
    DeviceInfo record;
    record.auxiliaryText1 = model.busName();
    record.productId = model.productId;
    record.modelName = model.name;
    record.serialNumber = drive.reportedSerial;
    record.vendorId = model.vendorId;
    record.auxiliaryText2 = drive.incomplete ? std::string() : drive.runningConfiguration;
    record.firmwareVersion = drive.incomplete ? std::string() : drive.runningFirmware;
    record.firmwareFileName = model.imageName();
    record.newFirmwareVersion = offered.firmware;
    record.chipsetType = drive.chipset;
    record.firmwareStatus = statusOf(drive, drive.runningFirmware, offered.firmware);
    record.configurationStatus = statusOf(drive, drive.runningConfiguration, offered.configuration);
    if (findFault(drive.faults, FaultKind::WrongImage) != nullptr) {
        record.firmwareFileName = modelWithOtherBridge(drive.chipset).imageName();
    }
    for (const Fault &fault : drive.faults) {
        applyFault(fault, &record);
    }
    return record;
}

/// True when a query changes the drive: it is counted, or uses up a fault.
bool isChangedByQuery(const Drive &drive)
{
    if (!drive.isAttached()) {
        return false;
    }
    if (drive.queries < numberOf(drive.faults, FaultKind::SettleQueries)) {
        return true;
    }
    return std::any_of(drive.faults.begin(), drive.faults.end(), [&drive](const Fault &fault) {
        const UsedUpBy event = describe(fault.kind).usedUpBy;
        return fault.once && (event == UsedUpBy::Query || (event == UsedUpBy::Settling && isSettled(drive)));
    });
}

void countQuery(Drive *drive)
{
    if (isSettled(*drive)) {
        useUp(&drive->faults, UsedUpBy::Settling);
    } else {
        ++drive->queries;
    }
    useUp(&drive->faults, UsedUpBy::Query);
}

} // namespace

Discovery::Discovery(BenchStore &store, std::string imageDirectory)
    : store(store), imageDirectory(std::move(imageDirectory))
{
}

std::vector<DeviceInfo> Discovery::query()
{
    std::vector<Drive> drives;
    store.read([&] { drives = DriveTable(store).all(); });
    if (std::any_of(drives.begin(), drives.end(), isChangedByQuery)) {
        store.change(
            [&] {
                DriveTable table(store);
                drives = table.all();
                for (const Drive &drive : drives) {
                    if (isChangedByQuery(drive)) {
                        Drive changed = drive;
                        countQuery(&changed);
                        table.update(changed);
                    }
                }
            },
            Durability::Relaxed);
    }
    std::vector<Drive> reported;
    std::int64_t probing = 0;
    for (const Drive &drive : drives) {
        if (!drive.isAttached()) {
            continue;
        }
        const Fault *const duplicate = findFault(drive.faults, FaultKind::DuplicateSerial);
        const bool isListedTwice = duplicate != nullptr && duplicate->text.empty();
        reported.insert(reported.end(), isListedTwice ? 2 : 1, drive);
        probing += numberOf(drive.faults, FaultKind::SlowProbe);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(probing));
    return records(reported);
}

std::vector<DeviceInfo> Discovery::records(const std::vector<Drive> &drives) const
{
    std::unordered_map<std::string, Versions> offers;
    std::vector<DeviceInfo> found;
    for (const Drive &drive : drives) {
        const auto [offer, isNew] = offers.try_emplace(drive.model);
        if (isNew) {
            offer->second = versionsOnOffer(drive.catalogueModel(), imageDirectory);
        }
        found.push_back(recordOf(drive, offer->second));
    }
    return found;
}

} // namespace bench
