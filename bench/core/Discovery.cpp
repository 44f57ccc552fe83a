#include "bench/core/Discovery.h"

#include "bench/core/DriveTable.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>
#include <unordered_map>
#include <utility>

namespace bench {

namespace {

/// What discovery reports for a status that it cannot determine for good.
constexpr std::int32_t StatusUnknown = 3;

/// The header of the model's image; without a usable image, what the catalogue says of it.
FirmwareImage imageOnOffer(const Model &model, const std::string &imageDirectory)
{
    try {
        return FirmwareImage::readHeader(imageDirectory + '/' + model.imageName());
    } catch (const Refused &) {
        return {model.chipset, model.newestFirmware, model.newestConfiguration, {}, {}};
    }
}

/// A model whose bridge is not `chipset`: where the fault "wrong-image" has its image from.
const Model &modelWithOtherBridge(std::int64_t chipset)
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
    const auto &number = describe(fault.kind).recordNumber;
    if (const auto *const id = std::get_if<std::uint16_t DeviceInfo::*>(&number)) {
        record->**id = static_cast<std::uint16_t>(fault.number);
    } else if (const auto *const code = std::get_if<std::int32_t DeviceInfo::*>(&number)) {
        record->**code = static_cast<std::int32_t>(fault.number);
    } else if (fault.field != nullptr) {
        record->*fault.field->member = fault.text;
    } else if (fault.kind == FaultKind::DuplicateSerial && fault.hasValue()) {
        record->serialNumber = fault.text;
    }
}

DeviceInfo recordOf(const Drive &drive, const FirmwareImage &offered)
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
    record.newFirmwareVersion = offered.firmwareVersion;
    record.chipsetType = static_cast<std::int32_t>(drive.chipset);
    record.firmwareStatus = statusOf(drive, drive.runningFirmware, offered.firmwareVersion);
    record.configurationStatus = statusOf(drive, drive.runningConfiguration, offered.configurationRevision);
    if (findFault(drive.faults, FaultKind::WrongImage) != nullptr) {
        record.firmwareFileName = modelWithOtherBridge(drive.chipset).imageName();
    }
    for (const Fault &fault : drive.faults) {
        applyFault(fault, &record);
    }
    return record;
}

/// The drive when a query of it is counted and has used up its faults; nothing when that changes nothing.
std::optional<Drive> asked(const Drive &drive)
{
    if (!drive.isAttached() || drive.faults.empty()) {
        return std::nullopt;
    }
    Drive after = drive;
    bool isChanged = false;
    if (drive.queries < numberOf(drive.faults, FaultKind::SettleQueries)) {
        ++after.queries;
        isChanged = true;
    } else if (isSettled(drive)) {
        isChanged = useUp(&after.faults, UsedUpBy::Settling);
    }
    isChanged = useUp(&after.faults, UsedUpBy::Query) || isChanged;
    return isChanged ? std::optional(after) : std::nullopt;
}

} // namespace

Discovery::Discovery(BenchStore &store, std::string imageDirectory)
    : store(store), imageDirectory(std::move(imageDirectory))
{
}

std::vector<DeviceInfo> Discovery::query()
{
    std::vector<Drive> drives = store.read([this] { return DriveTable(store).all(); });
    if (std::any_of(drives.begin(), drives.end(), asked)) {
        drives = store.change([this] { return askAll(); }, Durability::Relaxed);
    }
    const auto isUnattached = [](const Drive &drive) { return !drive.isAttached(); };
    drives.erase(std::remove_if(drives.begin(), drives.end(), isUnattached), drives.end());
    std::int64_t probing = 0;
    for (auto drive = drives.begin(); drive != drives.end(); ++drive) {
        probing += numberOf(drive->faults, FaultKind::SlowProbe);
        const Fault *const duplicate = findFault(drive->faults, FaultKind::DuplicateSerial);
        if (duplicate != nullptr && !duplicate->hasValue()) {
            drive = drives.insert(drive, *drive) + 1;
        }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(probing));
    return records(drives);
}

/// The drives as a query meets them; it is counted and uses up their faults.
std::vector<Drive> Discovery::askAll()
{
    DriveTable table(store);
    std::vector<Drive> drives = table.all();
    for (const Drive &drive : drives) {
        if (const std::optional<Drive> after = asked(drive)) {
            table.update(*after);
        }
    }
    return drives;
}

std::vector<DeviceInfo> Discovery::records(const std::vector<Drive> &drives) const
{
    std::unordered_map<std::string, FirmwareImage> offers;
    std::vector<DeviceInfo> found;
    found.reserve(drives.size());
    for (const Drive &drive : drives) {
        const auto [offer, isNew] = offers.try_emplace(drive.model);
        if (isNew) {
            offer->second = imageOnOffer(drive.catalogueModel(), imageDirectory);
        }
        found.push_back(recordOf(drive, offer->second));
    }
    return found;
}

} // namespace bench
