#pragma once

#include "bench/core/Catalogue.h"
#include "bench/core/Fault.h"
#include "bench/core/Table.h"

#include <array>
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

/// One drive of a bench: a plain value. Serial numbers and versions are bytes; times are milliseconds since
/// 1970.
struct Drive
{
    std::int64_t id = 0; ///< of its row in the database
    std::string serial; ///< its identity on the bench
    std::string model; ///< name of a model of the catalogue
    std::int64_t chipset = Chipset::NotSupported; ///< its bridge
    bool plugged = true; ///< attached and powered
    bool answers = true; ///< false while it is plugged in and does not come up
    std::string reportedSerial; ///< serial number that it goes by since its power-up
    std::string runningFirmware; ///< version in flash at power-up; empty in the boot ROM
    std::string runningConfiguration;
    bool bootRom = false; ///< powered up with an incomplete flash: runs nothing but its boot ROM
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
    std::string lastUpdate; ///< UpdateSucceeded or "failed: " and why, in UTF-8; empty for none
    std::int64_t lastUpdateAt = 0;
    std::vector<Fault> faults;

    static constexpr std::int64_t DefaultFlashRate = 16 * 1024;
    static constexpr std::int64_t MaximumFlashRate = 1000 * 1000 * 1000;
    static constexpr const char *UpdateSucceeded = "succeeded";

    /// The model's row in the catalogue.
    const Model &catalogueModel() const;
    DriveState state() const;
    /// Plugged in and answers.
    bool isAttached() const { return plugged && answers; }
    /// The state and, while the flash is written, how far that is: "being written 42%".
    std::string progressText() const;
    /// When and how the last update ended: "failed: the drive was pulled out, at 14:02"; empty for none.
    std::string lastUpdateText() const;
    /// Notes how an update has ended just now.
    void setLastUpdate(const std::string &outcome);
};

/// Refused as an invalid drive when a field is outside its limits or the model is not in the catalogue.
void check(const Drive &drive);

/// Milliseconds since 1970.
std::int64_t now();

/// All stored fields of a drive but its faults, in the order of the struct.
const std::array<Field<Drive>, 24> &driveFields();

} // namespace bench
