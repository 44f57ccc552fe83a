#pragma once

#include "bench/core/DriveTable.h"
#include "bench/core/FirmwareImage.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace bench {

/**
 * One writing of an image into a drive's flash chip, from the check of the image to the verified chip.
 *
 * Used once, on one thread, which sleeps while the chip is slow.
 */
class Flash
{
public:
    /// `store` outlives this.
    explicit Flash(BenchStore &store) : store(store) { }

    /// Writes the image file into the drive that goes by this serial number, at the drive's rate. `chipset`
    /// is the bridge that the updater is made for. The whole image is checked before anything is erased; a
    /// flash that breaks off later leaves the chip incomplete. Refused with the reason, which is also noted
    /// as the drive's last update.
    void run(const std::string &reportedSerial, std::int32_t chipset, const std::string &imageFile);

private:
    void find(const std::string &reportedSerial);
    void readImage(const std::string &imageFile, std::int32_t chipset);
    void begin();
    void erase();
    void program();
    void verify();
    void finish();
    void noteFailure(const std::string &reason);

    void step(
        const std::function<void(DriveTable &table)> &work, Durability durability = Durability::Relaxed);
    void programPage(std::size_t position, const std::string &data);
    void writeChip(std::size_t position, std::size_t length);
    void waitUntil(std::chrono::steady_clock::time_point due);
    std::int64_t breakPosition(FaultKind fault) const;
    [[noreturn]] void breakOff(FaultKind fault);

    BenchStore &store;
    Drive drive; ///< as it was in the last step
    FlashChip chip;
    FirmwareImage image;
    bool begun = false; ///< the flash of the drive is this object's to write
    std::int64_t total = 0;
    std::int64_t written = 0;
};

} // namespace bench
