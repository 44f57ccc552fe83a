#include "bench/core/DriveLifeCycle.h"

#include "bench/core/DriveTable.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"

#include <algorithm>

namespace bench {

namespace {

void powerUp(Drive *drive, const FlashChip &chip)
{
    drive->flashFirmware = chip.version(FlashChip::Firmware);
    drive->flashConfiguration = chip.version(FlashChip::Configuration);
    drive->incomplete = drive->flashFirmware.empty() || drive->flashConfiguration.empty();
    drive->heartbeat = 0;
    drive->bootRom = drive->incomplete;
    drive->runningFirmware = drive->bootRom ? std::string() : drive->flashFirmware;
    drive->runningConfiguration = drive->bootRom ? std::string() : drive->flashConfiguration;
    drive->plugged = true;
    drive->mounted = !drive->bootRom;
    drive->pluggedAt = now();
    drive->queries = 0;
    ++drive->powerUps;

    drive->answers = findFault(drive->faults, FaultKind::NoReturn) == nullptr;
    const Fault *const renamed = findFault(drive->faults, FaultKind::NewSerial);
    drive->reportedSerial = renamed == nullptr ? drive->serial : renamed->text;
    useUp(&drive->faults, UsedUpBy::PowerUp);
}

} // namespace

std::vector<Drive> DriveLifeCycle::drives() const
{
    return store.read([this] { return DriveTable(store).all(); });
}

Drive DriveLifeCycle::drive(const std::string &serial) const
{
    return store.read([&] { return DriveTable(store).get(serial); });
}

void DriveLifeCycle::add(const Drive &drive)
{
    check(drive);
    FlashChip chip;
    chip.load(FirmwareImage::forModel(drive.catalogueModel(), drive.flashFirmware, drive.flashConfiguration));
    Drive added = drive;
    powerUp(&added, chip);
    added.plugged = drive.plugged;
    added.mounted = drive.plugged;
    restore(added, chip);
}

void DriveLifeCycle::restore(const Drive &drive, const FlashChip &chip)
{
    check(drive);
    store.change([&] {
        DriveTable table(store);
        require(!table.find(drive.serial),
            "a drive with this serial number is on the bench; choose another with --serial");
        table.insert(drive, chip);
    });
}

void DriveLifeCycle::remove(const std::string &serial)
{
    store.change([&] { DriveTable(store).remove(serial); });
}

void DriveLifeCycle::plug(const std::string &serial)
{
    changeDrive(serial, [this](Drive &drive) {
        require(!drive.plugged, "it is plugged in already; to restart it, use: drive-bench replug");
        powerUp(&drive, DriveTable(store).chip(drive));
    });
}

void DriveLifeCycle::unplug(const std::string &serial)
{
    changeDrive(serial, [](Drive &drive) {
        require(drive.plugged, "it is unplugged already; to plug it in, use: drive-bench plug");
        drive.plugged = false;
        drive.mounted = false;
        drive.unpluggedAt = now();
        useUp(&drive.faults, UsedUpBy::Unplugging);
    });
}

void DriveLifeCycle::setFault(const std::string &serial, const Fault &fault)
{
    check(fault);
    changeDrive(serial, [&fault](Drive &drive) {
        const auto present = std::find_if(drive.faults.begin(), drive.faults.end(),
            [&fault](const Fault &other) { return other.kind == fault.kind && other.field == fault.field; });
        if (present != drive.faults.end()) {
            *present = fault;
        } else {
            drive.faults.push_back(fault);
        }
    });
}

void DriveLifeCycle::clearFault(const std::string &serial, FaultKind kind)
{
    changeDrive(serial, [kind](Drive &drive) {
        require(removeFault(&drive.faults, kind),
            std::string("the fault \"") + describe(kind).name
                + "\" is not set; drive-bench show lists those that are");
    });
}

void DriveLifeCycle::clearFaults(const std::string &serial)
{
    changeDrive(serial, [](Drive &drive) { drive.faults.clear(); });
}

void DriveLifeCycle::changeDrive(const std::string &serial, const std::function<void(Drive &drive)> &work)
{
    store.change([&] {
        DriveTable table(store);
        Drive drive = table.get(serial);
        work(drive);
        table.update(drive);
    });
}

} // namespace bench
