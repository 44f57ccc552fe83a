// SPDX-License-Identifier: MIT
#include "bench/core/Discovery.h"

#include "bench/core/Image.h"
#include "bench/core/Record.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <thread>

namespace bench {

namespace {

/// The header of the model's image; without a usable image, what the catalogue says of it.
Image imageOnOffer(const Model &model, const std::string &benchDirectory, const std::string &imageDirectory)
{
    try {
        return readImageHeader(imagePath(benchDirectory, imageDirectory + '/' + model.imageName()));
    } catch (const Refused &) {
        return {model.chipset, model.newestFirmware, model.newestConfiguration, 0};
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
    return find(drive.faults, FaultKind::NeverSettles) == nullptr
        && drive.queries >= numberOf(drive.faults, FaultKind::SettleQueries)
        && (settleTime == 0 || now() - drive.pluggedAt >= settleTime);
}

std::int32_t statusOf(const Drive &drive, const std::string &running, const std::string &offered)
{
    if (!isSettled(drive)) {
        return Status::NotYetDetermined;
    }
    if (drive.incomplete || drive.isInBootRom() || drive.chipset == Chipset::NotSupported) {
        return Status::Unknown;
    }
    return running == offered ? Status::UpToDate : Status::UpdateRequired;
}

std::string bytes(const std::string &text)
{
    return bytesFromText(text).value_or(std::string());
}

DeviceInfo recordOf(const Drive &drive, const Image &offered)
{
    const Model &model = drive.catalogueModel();
    DeviceInfo record;
    record.auxiliaryText1 = model.busName();
    record.productId = model.productId;
    record.modelName = model.name;
    record.serialNumber = bytes(drive.reportedSerial);
    record.vendorId = model.vendorId;
    record.auxiliaryText2 = drive.incomplete ? std::string() : bytes(drive.runningConfiguration);
    record.firmwareVersion = drive.incomplete ? std::string() : bytes(drive.runningFirmware);
    record.firmwareFileName = model.imageName();
    record.newFirmwareVersion = bytes(offered.firmware);
    record.chipsetType = static_cast<std::int32_t>(drive.chipset);
    record.firmwareStatus = statusOf(drive, drive.runningFirmware, offered.firmware);
    record.configurationStatus = statusOf(drive, drive.runningConfiguration, offered.configuration);
    for (const Fault &fault : drive.faults) {
        if (fault.fault == FaultKind::WrongImage) {
            record.firmwareFileName = modelWithOtherBridge(drive.chipset).imageName();
        } else if (fault.fault == FaultKind::Report) {
            apply(fault, &record);
        }
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

/// The drives as a query meets them; it is counted and uses up their faults.
std::vector<Drive> askAll(Store &store)
{
    std::vector<Drive> drives = store.drives();
    for (const Drive &drive : drives) {
        if (const std::optional<Drive> after = asked(drive)) {
            store.update(*after);
        }
    }
    return drives;
}

} // namespace

std::vector<DeviceInfo> query(Store &store, const std::string &imageDirectory)
{
    std::vector<Drive> drives = store.read([&store] { return store.drives(); });
    if (std::any_of(drives.begin(), drives.end(), asked)) {
        drives = store.change([&store] { return askAll(store); });
    }
    std::vector<Drive> found;
    std::int64_t probing = 0;
    for (const Drive &drive : drives) {
        const bool isDuplicate = find(drive.faults, FaultKind::DuplicateSerial) != nullptr;
        found.insert(found.end(), drive.isAttached() ? (isDuplicate ? 2 : 1) : 0, drive);
        probing += drive.isAttached() ? numberOf(drive.faults, FaultKind::SlowProbe) : 0;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(probing));
    return records(found, store.directory(), imageDirectory);
}

std::vector<DeviceInfo> records(
    const std::vector<Drive> &drives, const std::string &benchDirectory, const std::string &imageDirectory)
{
    std::map<std::string, Image> offers;
    std::vector<DeviceInfo> found;
    found.reserve(drives.size());
    for (const Drive &drive : drives) {
        const auto [offer, isNew] = offers.try_emplace(drive.model);
        if (isNew) {
            offer->second = imageOnOffer(drive.catalogueModel(), benchDirectory, imageDirectory);
        }
        found.push_back(recordOf(drive, offer->second));
    }
    return found;
}

} // namespace bench
