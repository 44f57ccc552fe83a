#pragma once

#include "bench/core/Catalogue.h"
#include "bench/core/Fault.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include <cstdint>

namespace bench {

/**
 * One drive of a bench, as its file says: a plain value.
 *
 * Texts hold code points U+0000 to U+00FF only, one for each byte that the drive reports.
 */
struct Drive
{
    QString serial; ///< its identity on the bench, and the name of its files
    QString model; ///< name of a model of the catalogue
    std::int32_t chipset = 0; ///< code of its bridge; 0 for one without an updater
    bool plugged = true; ///< attached and powered
    bool answers = true; ///< false while it is plugged in and does not come up
    QString reportedSerial; ///< serial number that it goes by since its power-up
    QString runningFirmware; ///< version in flash at power-up; empty in the boot ROM
    QString runningConfiguration;
    bool bootRom = false; ///< powered up with a torn flash: runs nothing but its boot ROM
    QString flashFirmware; ///< version in flash now; empty when torn
    QString flashConfiguration;
    bool torn = false; ///< the flash is being written, or its writing was cut short
    std::int64_t bytesWritten = 0; ///< progress of the last flash
    std::int64_t bytesToWrite = 0;
    bool mounted = true; ///< its volumes are
    std::int64_t flashRate = DefaultFlashRate; ///< bytes written a second
    std::int64_t powerUps = 0; ///< counts each time that it was plugged in
    std::int64_t pluggedAt = 0; ///< milliseconds since 1970
    std::int64_t queries = 0; ///< times that it was asked since power-up, counted while that matters
    QVector<Fault> faults;

    static constexpr std::int64_t DefaultFlashRate = 16 * 1024;

    /// The model's row in the catalogue.
    const Model &catalogueModel() const;

    /// The drive's file, as an object and as the bytes of the file.
    QJsonObject toJson() const;
    QByteArray encode() const;

    /// Reads a drive's file. False with "line:column: reason" when anything in it is not as it must be;
    /// `drive` is then untouched.
    static bool decode(const QByteArray &file, Drive *drive, QString *problem);

    /// Removes the fault of that name; true when there was one.
    bool clearFault(const QString &name);

    /// Removes a fault set for once, after it has had its effect.
    void faultHadEffect(const char *name);
};

bool operator==(const Drive &left, const Drive &right);

/// The bare name, without extension, of the files of the drive with that serial number.
QString fileNameFor(const QString &serial);

} // namespace bench
