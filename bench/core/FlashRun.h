#pragma once

#include "bench/core/FirmwareImage.h"
#include "bench/core/FlashChip.h"

#include <QString>
#include <QVector>

#include <chrono>
#include <cstdint>
#include <memory>

namespace bench {

class Bench;
struct Drive;

/**
 * One writing of an image into a drive's flash chip, from the check of the image to the verified chip.
 *
 * Used once, on one thread, which sleeps while the chip is slow.
 */
class FlashRun
{
public:
    explicit FlashRun(Bench *owner);

    /// Finds the drive and checks the image; nothing is changed when this is refused. Afterwards the flash
    /// counts as torn.
    bool start(
        const QString &reportedSerial, std::int32_t chipset, const QString &imageFile, QString *reason);

    /// Erases, programs at the drive's rate, reads back and verifies. False leaves the flash torn.
    bool write(QString *reason);

private:
    using Clock = std::chrono::steady_clock;

    struct Chunk
    {
        int page;
        QByteArray data;
    };

    bool erase(QString *reason);
    bool program(QString *reason);
    bool verify(QString *reason);
    bool finish(QString *reason);
    bool lookAtDrive(QString *reason);
    bool waitUntil(Clock::time_point due, QString *reason);
    bool breakOff(const char *fault, const QString &why, bool unplugged, QString *reason);
    bool isStillThere(const Drive &drive) const;

    Bench *const bench;
    FirmwareImage image;
    QString serial;
    std::unique_ptr<FlashChip> chip;
    QVector<Chunk> chunks;
    std::int64_t powerUps = 0; ///< with pluggedAt: tells the drive from itself after a restart
    std::int64_t pluggedAt = 0;
    std::int64_t rate = 1;
    std::int64_t total = 0;
    std::int64_t written = 0;
    std::int64_t errorAt = -1; ///< bytes after which a fault stops the writing; -1 for never
    std::int64_t pulledOutAt = -1;
    bool verifyFails = false;
    Clock::time_point lastLook;
};

} // namespace bench
