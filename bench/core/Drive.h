// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Catalogue.h"
#include "bench/core/Faults.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

enum class DriveState {
    Unplugged,
    Silent, ///< plugged in and does not come up
    Writing, ///< its flash is being written; the progress is in the drive
    BootRom, ///< its flash is incomplete: it enumerates with unknown statuses and can be flashed
    RestartNeeded, ///< its flash holds another version than it runs
    Ready,
};

/// The state in a few words, for a person.
const char *stateText(DriveState state);

/**
 * One drive of a bench: a plain value, stored, printed and exported as one JSON document whose members have
 * these names. In its texts, which are UTF-8, a character U+0000 to U+00FF stands for each byte that the
 * drive reports; only `lastUpdate` is any text. Times are milliseconds since 1970.
 */
struct Drive
{
    std::string serial; ///< its identity on the bench
    std::string model; ///< name of a model of the catalogue
    std::int64_t chipset = Chipset::NotSupported; ///< its bridge
    bool plugged = true; ///< attached and powered
    bool answers = true; ///< false while it is plugged in and does not come up
    std::string reportedSerial; ///< serial number that it goes by since its power-up
    std::string runningFirmware; ///< version in flash at power-up; empty in the boot ROM
    std::string runningConfiguration;
    std::string flashFirmware; ///< version in flash now; empty when incomplete
    std::string flashConfiguration;
    bool incomplete = false; ///< the flash is being written, or its writing was cut short
    std::int64_t bytesWritten = 0; ///< progress of the last flash
    std::int64_t bytesToWrite = 0;
    bool mounted = true; ///< its volumes are
    std::int64_t flashRate = DefaultFlashRate; ///< bytes written a second
    std::int64_t powerUps = 0; ///< counts each time that it was plugged in
    std::int64_t pluggedAt = 0;
    std::int64_t unpluggedAt = 0; ///< 0 for a drive that was never unplugged
    std::int64_t queries = 0; ///< times that it was asked since power-up, counted while that matters
    std::int64_t flashes = 0; ///< counts each time that writing of its flash began
    std::int64_t heartbeat = 0; ///< when whoever writes the flash was last seen; 0 when nobody does
    std::string lastUpdate; ///< UpdateSucceeded or "failed: " and why; empty for none
    std::int64_t lastUpdateAt = 0;
    Faults faults;

    static constexpr std::int64_t DefaultFlashRate = 16 * 1024;
    static constexpr std::int64_t MaximumFlashRate = 1000 * 1000 * 1000;
    static constexpr const char *UpdateSucceeded = "succeeded";

    /// The model's row in the catalogue.
    const Model &catalogueModel() const { return modelNamed(model); }
    DriveState state() const;
    /// Plugged in and answers.
    bool isAttached() const { return plugged && answers; }
    /// Runs nothing but its boot ROM, since its flash was incomplete when it was plugged in.
    bool isInBootRom() const { return runningFirmware.empty(); }
    /// Whoever wrote its flash went away before the end.
    bool isInterrupted() const;
    /// The state and, while the flash is written, how far that is: "being written 42%".
    std::string progressText() const;
    /// How the last update ended, and when: "failed: the drive was pulled out, at 14:02"; empty for none.
    std::string lastUpdateText() const;
    /// Notes how an update has ended just now.
    void setLastUpdate(const std::string &outcome);
};

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Drive, serial, model, chipset, plugged, answers,
    reportedSerial, runningFirmware, runningConfiguration, flashFirmware, flashConfiguration, incomplete,
    bytesWritten, bytesToWrite, mounted, flashRate, powerUps, pluggedAt, unpluggedAt, queries, flashes,
    heartbeat, lastUpdate, lastUpdateAt, faults)

/// A drive of that model, up to date, plugged in.
Drive newDrive(const Model &model);
/// The six drives of a sample bench: one for each thing that a person can meet.
std::vector<Drive> sampleDrives();

/// The drive of a document, wherever that comes from. Members that are left out have the value of a new drive
/// of the model. Refused when a member is not known, has a value of another type or one outside its limits;
/// `path` is the JSON pointer of the document, for the refusal.
Drive driveFromJson(const Json &json, const std::string &path = "");

/// Refused when something is outside its limits: "flashRate: must be …".
void check(const Drive &drive);

/// Refused unless each member of an object has the name and the type of one of `pattern`, and each item of a
/// list is like the first of the pattern's.
void checkLike(const Json &json, const Json &pattern, const std::string &path);

/// Milliseconds since 1970; 0 before that.
std::int64_t now();

/// Adds one to a counter, which begins again after the largest number that JSON carries exactly.
void count(std::int64_t *counter);

} // namespace bench
