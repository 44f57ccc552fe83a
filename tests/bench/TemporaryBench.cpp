#include "tests/bench/TemporaryBench.h"

#include "bench/core/BenchDocument.h"
#include "bench/core/DriveTable.h"
#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"

#include <QDir>

#include <map>

using namespace bench;

namespace {

/// Names and contents of the image files of all models, made once, since their digests take their time.
const std::map<std::string, std::string> &smallImages()
{
    static const auto images = [] {
        std::map<std::string, std::string> files;
        for (const Model &model : models()) {
            FirmwareImage image =
                FirmwareImage::forModel(model, model.newestFirmware, model.newestConfiguration);
            image.firmware.resize(3000);
            image.configuration.resize(500);
            files.emplace(model.imageName(), image.encode());
        }
        return files;
    }();
    return images;
}

} // namespace

TemporaryBench::TemporaryBench()
{
    BenchStore::create(directory(), false, [](BenchStore &) {});
    opened = std::make_unique<BenchStore>(directory());
    QDir(temporary.path()).mkdir("images");
    for (const auto &[name, file] : smallImages()) {
        writeFile(imageDirectory() + '/' + name, file);
    }
}

std::string TemporaryBench::image(const std::string &model) const
{
    return imageDirectory() + '/' + findModel(model)->imageName();
}

void TemporaryBench::addOutdated(const std::string &serial, const std::string &model, std::int64_t rate)
{
    Drive drive = newDrive(*findModel(model));
    drive.serial = serial;
    drive.flashRate = rate;
    drive.flashFirmware = "0.9";
    drive.flashConfiguration = "1";
    lifeCycle().add(drive);
}

FlashChip TemporaryBench::chip(const std::string &serial)
{
    return opened->read([&] {
        const DriveTable table(*opened);
        return table.chip(table.get(serial));
    });
}

std::string TemporaryBench::content()
{
    return exportBench(*opened);
}

std::string refusal(const std::function<void()> &work)
{
    try {
        work();
    } catch (const Refused &refused) {
        return refused.what();
    }
    return {};
}

Fault numberFault(FaultKind kind, std::int64_t number, bool once)
{
    Fault fault{kind};
    fault.number = number;
    fault.once = once;
    return fault;
}

Fault textFault(FaultKind kind, const std::string &text, const char *field, bool once)
{
    Fault fault{kind};
    fault.text = text;
    fault.field = findRecordField(field);
    fault.once = once;
    return fault;
}
