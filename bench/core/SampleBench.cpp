#include "bench/core/SampleBench.h"

namespace bench {

namespace {

/// A drive with an older version of what is named; null stands for the newest.
Drive sample(const char *serial, const char *model, const char *firmware, const char *configuration)
{
    Drive drive = newDrive(*findModel(model));
    drive.serial = serial;
    drive.flashFirmware = firmware == nullptr ? drive.flashFirmware : firmware;
    drive.flashConfiguration = configuration == nullptr ? drive.flashConfiguration : configuration;
    return drive;
}

} // namespace

std::vector<Drive> sampleDrives()
{
    std::vector<Drive> drives{
        sample("TV0001PEBBLE", "Pebble", "2.07", "3"),
        sample("TV0002BOLLARD", "Bollard USB3", "3.91", nullptr),
        sample("TV0003LAMINA", "Lamina Slim", nullptr, "4"),
        sample("TV0004HARBOUR", "Harbour (FireWire 800)", "1.40", "2"),
        sample("TV0005SKIFF", "Skiff", nullptr, nullptr),
        sample("TV0006DUO", "Harbour Duo", "3.88", "6"),
    };
    // An early Harbour Duo, with a bridge for which there is no updater.
    drives.back().chipset = Chipset::NotSupported;
    return drives;
}

Drive newDrive(const Model &model)
{
    Drive drive;
    drive.model = model.name;
    drive.chipset = model.chipset;
    drive.flashFirmware = model.newestFirmware;
    drive.flashConfiguration = model.newestConfiguration;
    return drive;
}

} // namespace bench
