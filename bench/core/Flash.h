// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Image.h"
#include "bench/core/Store.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace bench {

/**
 * One writing of an image into a drive's flash, from the check of the image to the versions in flash.
 *
 * Used once, on one thread, which sleeps while the flash is slow.
 */
class Flash
{
public:
    /// `store` outlives this.
    explicit Flash(Store &store) : store(store) { }

    /// Writes the image file into the drive that goes by this serial number, at the drive's rate. `chipset`
    /// is the bridge that the updater is made for. The whole image is checked before anything is written; a
    /// flash that breaks off later leaves the drive incomplete. Refused with the reason, which is also noted
    /// as the drive's last update.
    void run(const std::string &reportedSerial, std::int32_t chipset, const std::string &imageFile);

private:
    void findDrive(const std::string &reportedSerial);
    void checkImage(const std::string &imageFile, std::int32_t chipset);
    void begin();
    void write();
    void finish();
    void noteFailure(const std::string &reason);

    void step(const std::function<void()> &work);
    std::int64_t breakPosition(FaultKind fault) const;
    [[noreturn]] void breakOff(FaultKind fault, const std::string &reason);

    Store &store;
    Drive drive; ///< as it was in the last step
    Image image;
    bool begun = false; ///< the flash of the drive is this object's to write
    std::int64_t written = 0;
};

} // namespace bench
