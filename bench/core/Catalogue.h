#pragma once

#include <QString>
#include <QVector>

#include <cstdint>

namespace bench {

/// How a person restarts a drive of a model after an update.
enum class Restart { Unplug, PowerButton, NotNeeded };

/// One model of the maker's drives.
struct Model
{
    std::uint16_t vendorId; ///< 0x0E7A on USB, 0xC5E2 on FireWire
    std::uint16_t productId; ///< USB product ID; 0 for a FireWire drive
    QString name; ///< as the drive reports it
    std::int32_t chipset; ///< code of the bridge
    Restart restart;
    QString body; ///< what the drive looks like, in a few words
    int pictureSize; ///< width and height of its picture in pixels
    QString newestFirmware; ///< firmware version in the image that belongs to this release
    QString newestConfiguration; ///< configuration revision in that image

    bool isFireWire() const { return restart == Restart::NotNeeded; }
    /// File name of the firmware image, for example "harbour-firewire-800.tfw".
    QString imageName() const;
    /// Path of the picture in the program's resource collection.
    QString picture() const;
};

/// All models, USB ones by product ID, then FireWire ones.
const QVector<Model> &models();

/// The model of exactly that name, null when there is none.
const Model *findModel(const QString &name);

/// Name of the bridge with that code ("Asm1051E"); "none" for a code without an updater.
QString bridgeName(std::int32_t chipset);

} // namespace bench
