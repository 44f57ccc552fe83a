#include "bench/core/SampleBench.h"

namespace bench {

namespace {

Drive sample(
    const char *serial, const char *modelName, const char *olderFirmware, const char *olderConfiguration)
{
    const Model &model = *findModel(QString::fromLatin1(modelName));
    Drive drive;
    drive.serial = QString::fromLatin1(serial);
    drive.model = model.name;
    drive.chipset = model.chipset;
    drive.flashFirmware =
        olderFirmware == nullptr ? model.newestFirmware : QString::fromLatin1(olderFirmware);
    drive.flashConfiguration =
        olderConfiguration == nullptr ? model.newestConfiguration : QString::fromLatin1(olderConfiguration);
    return drive;
}

} // namespace

QVector<Drive> sampleDrives()
{
    QVector<Drive> drives{
        sample("TV0001PEBBLE", "Pebble", "2.07", "3"),
        sample("TV0002BOLLARD", "Bollard USB3", "3.91", nullptr),
        sample("TV0003LAMINA", "Lamina Slim", nullptr, "4"),
        sample("TV0004HARBOUR", "Harbour (FireWire 800)", "1.40", "2"),
        sample("TV0005SKIFF", "Skiff", nullptr, nullptr),
        sample("TV0006DUO", "Harbour Duo", "3.88", "6"),
    };
    // An early Harbour Duo, with a bridge for which there is no updater.
    drives.last().chipset = 0;
    return drives;
}

} // namespace bench
