// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Store.h"
#include "devices/Timing.h"

#include <string>
#include <vector>

/// What a person does with the drives of a bench. Each function is one transaction; any thread and process
/// may call. Refused when there is no such drive, or when what is asked for is done already.
namespace bench {

/// All drives, plugged in or not, by serial number.
std::vector<Drive> allDrives(const Store &store);
Drive driveNamed(const Store &store, const std::string &serial);

/// Puts a new drive on the bench, plugged in or not as it says, with what is in its flash. Everything that a
/// power-up sets is set here.
void addDrive(Store &store, Drive drive);
/// Takes a drive off the bench for good.
void removeDrive(Store &store, const std::string &serial);

/// A serial number that no drive begins with: "TV" and the lowest free number, then the first word of the
/// model's name.
std::string freeSerial(const std::vector<Drive> &drives, const std::string &model);

/// A drive that is away for that many seconds is missed by the program.
constexpr int AwaySeconds = PauseSeconds + 1;

/// The drive then runs what its flash holds.
void plugDrive(Store &store, const std::string &serial);
void unplugDrive(Store &store, const std::string &serial);

/// Sets a fault; one of the same kind, and for a report of the same field, is replaced.
void setFault(Store &store, const std::string &serial, const Fault &fault);
/// Refused when no such fault is set.
void clearFault(Store &store, const std::string &serial, FaultKind kind);
void clearFaults(Store &store, const std::string &serial);

/// Takes the power from a drive of a change that is under way.
void powerDown(Drive *drive);

/// What became of an attempt to unmount the volumes of a drive.
struct Unmount
{
    int value; ///< what the maker's library returns
    std::string reason; ///< why a flash that had succeeded is now a failed update; empty otherwise
};
/// Unmounts the volumes of the drive that goes by this serial number.
Unmount unmountDrive(Store &store, const std::string &reportedSerial);

/// Of the drives that go by that serial number the first, and one that is attached before others.
std::optional<Drive> findReported(const std::vector<Drive> &drives, const std::string &reportedSerial);

} // namespace bench
