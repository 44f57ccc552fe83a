// SPDX-License-Identifier: MIT
#include "bench/core/LifeCycle.h"

#include "bench/core/Refused.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <functional>
#include <utility>

namespace bench {

namespace {

void powerUp(Drive *drive)
{
    if (drive->isInterrupted()) {
        drive->setLastUpdate("interrupted");
    }
    drive->heartbeat = 0;
    drive->runningFirmware = drive->incomplete ? "" : drive->flashFirmware;
    drive->runningConfiguration = drive->incomplete ? "" : drive->flashConfiguration;
    drive->plugged = true;
    drive->mounted = !drive->incomplete;
    drive->pluggedAt = now();
    drive->queries = 0;
    count(&drive->powerUps);

    drive->answers = find(drive->faults, FaultKind::NoReturn) == nullptr;
    const Fault *const renamed = find(drive->faults, FaultKind::NewSerial);
    drive->reportedSerial = renamed == nullptr ? drive->serial : renamed->value;
    useUp(&drive->faults, UsedUpBy::PowerUp);
}

Drive existing(const Store &store, const std::string &serial)
{
    const std::optional<Drive> drive = store.find(serial);
    require(drive.has_value(),
        "there is no drive with that serial number on the bench; drive-bench list shows those that are");
    return *drive;
}

void changeDrive(Store &store, const std::string &serial, const std::function<void(Drive &drive)> &work)
{
    store.change([&] {
        Drive drive = existing(store, serial);
        work(drive);
        store.update(drive);
    });
}

} // namespace

std::vector<Drive> allDrives(const Store &store)
{
    return store.read([&store] { return store.drives(); });
}

Drive driveNamed(const Store &store, const std::string &serial)
{
    return store.read([&] { return existing(store, serial); });
}

void addDrive(Store &store, Drive drive)
{
    const bool plugged = drive.plugged;
    drive.reportedSerial = drive.serial;
    check(drive);
    powerUp(&drive);
    drive.plugged = plugged;
    drive.mounted = plugged;
    store.change([&] {
        require(!store.find(drive.serial),
            "a drive with this serial number is on the bench; choose another with --serial");
        store.insert(drive);
    });
}

std::string freeSerial(const std::vector<Drive> &drives, const std::string &model)
{
    std::string beginning;
    const auto isTaken = [&beginning](const Drive &drive) {
        return drive.serial.compare(0, beginning.size(), beginning) == 0;
    };
    int number = 0;
    do {
        char text[16] = {};
        std::snprintf(text, sizeof text, "TV%04d", ++number);
        beginning = text;
    } while (std::any_of(drives.begin(), drives.end(), isTaken));
    for (const char letter : model.substr(0, model.find(' '))) {
        beginning += static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    }
    return beginning;
}

void removeDrive(Store &store, const std::string &serial)
{
    // Nothing is read: that would be refused for a damaged drive.
    const bool isRemoved = store.change([&] { return store.remove(serial); });
    if (!isRemoved) {
        driveNamed(store, serial);
    }
}

void plugDrive(Store &store, const std::string &serial)
{
    changeDrive(store, serial, [](Drive &drive) {
        require(!drive.plugged, "it is plugged in already; to restart it, use: drive-bench replug");
        powerUp(&drive);
    });
}

void unplugDrive(Store &store, const std::string &serial)
{
    changeDrive(store, serial, [](Drive &drive) {
        require(drive.plugged, "it is unplugged already; to plug it in, use: drive-bench plug");
        powerDown(&drive);
        useUp(&drive.faults, UsedUpBy::Unplugging);
    });
}

void powerDown(Drive *drive)
{
    drive->plugged = false;
    drive->mounted = false;
    drive->unpluggedAt = now();
}

void setFault(Store &store, const std::string &serial, const Fault &fault)
{
    check(fault);
    changeDrive(store, serial, [&fault](Drive &drive) { set(&drive.faults, fault); });
}

void clearFault(Store &store, const std::string &serial, FaultKind kind)
{
    changeDrive(store, serial, [kind](Drive &drive) {
        require(remove(&drive.faults, kind),
            std::string("the fault \"") + describe(kind).name
                + "\" is not set; drive-bench show lists those that are");
    });
}

void clearFaults(Store &store, const std::string &serial)
{
    changeDrive(store, serial, [](Drive &drive) { drive.faults.clear(); });
}

Unmount unmountDrive(Store &store, const std::string &reportedSerial)
{
    return store.change([&] {
        Unmount result{0, {}};
        std::optional<Drive> drive = findReported(store.drives(), reportedSerial);
        if (!drive) {
            return result;
        }
        if (drive->isAttached()) {
            const Fault *const refusal = find(drive->faults, FaultKind::UnmountReturns);
            result.value = refusal == nullptr ? 1 : static_cast<int>(refusal->number());
            drive->mounted = drive->mounted && refusal != nullptr;
            useUp(&drive->faults, UsedUpBy::Unmounting);
        }
        if ((result.value & 1) == 0 && drive->lastUpdate == Drive::UpdateSucceeded) {
            result.reason = "the volumes were not unmounted, "
                + (drive->isAttached() ? "the library returned " + std::to_string(result.value)
                                       : "the drive was pulled out");
            drive->setLastUpdate("failed: " + result.reason);
        }
        store.update(*drive);
        return result;
    });
}

std::optional<Drive> findReported(const std::vector<Drive> &drives, const std::string &reportedSerial)
{
    std::optional<Drive> found;
    for (const Drive &drive : drives) {
        if (drive.reportedSerial == reportedSerial
            && (!found || (drive.isAttached() && !found->isAttached()))) {
            found = drive;
        }
    }
    return found;
}

} // namespace bench
