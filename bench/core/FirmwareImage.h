#pragma once

#include "bench/core/Catalogue.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace bench {

/**
 * A firmware image (.tfw): what the chip updaters write into a drive's flash chip.
 *
 * The layout of the file is described in docs/firmware-image.md. Versions are Latin-1 text.
 */
struct FirmwareImage
{
    std::int32_t bridge = 0; ///< code of the bridge that the image is for
    QString firmwareVersion;
    QString configurationRevision;
    QByteArray firmware;
    QByteArray configuration;

    static constexpr int MaximumFirmware =
        120 * 1024 - 256; ///< bytes that fit into the chip's firmware region
    static constexpr int MaximumConfiguration = 8 * 1024 - 256;
    static constexpr int MaximumText = 32; ///< bytes of a version
    static constexpr std::int64_t MaximumFile = 160 * 1024; ///< bytes; no larger file is read

    /// The image that the maker would ship for this model with these versions. The payloads are made up, but
    /// always the same for the same arguments.
    static FirmwareImage forModel(
        const Model &model, const QString &firmwareVersion, const QString &configurationRevision);

    /// The whole file.
    QByteArray encode() const;

    /// Reads a whole file, digests included. False with a reason; `image` is then untouched.
    static bool decode(const QByteArray &file, FirmwareImage *image, QString *reason);

    /// Reads the file at `path`, at most its first `limit` bytes. False with a reason.
    static bool read(
        const QString &path, FirmwareImage *image, QString *reason, std::int64_t limit = MaximumFile);
};

} // namespace bench
