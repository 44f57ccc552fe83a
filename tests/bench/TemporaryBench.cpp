// SPDX-License-Identifier: MIT
#include "tests/bench/TemporaryBench.h"

#include "bench/core/Files.h"

#include <SQLiteCpp/Database.h>

#include <QDir>

#include <map>

using namespace bench;

namespace {

/// Names and contents of the image files of all models, made once.
const std::map<std::string, std::string> &images()
{
    static const auto made = [] {
        std::map<std::string, std::string> files;
        for (const Model &model : models()) {
            files.emplace(
                model.imageName(), imageFile(model, model.newestFirmware, model.newestConfiguration));
        }
        return files;
    }();
    return made;
}

} // namespace

TemporaryBench::TemporaryBench()
{
    createBench(directory(), false, [](Store &) {});
    opened = std::make_unique<Store>(directory());
    QDir(temporary.path()).mkdir("images");
    for (const auto &[name, content] : images()) {
        writeFile(imageDirectory() + '/' + name, content);
    }
}

std::string TemporaryBench::image(const std::string &model) const
{
    return imageDirectory() + '/' + modelNamed(model).imageName();
}

void TemporaryBench::addOutdated(const std::string &serial, const std::string &model, std::int64_t rate)
{
    Drive added = ::drive(serial, model);
    added.flashRate = rate;
    added.flashFirmware = "0.9";
    added.flashConfiguration = "1";
    addDrive(*opened, added);
}

void TemporaryBench::setFault(const std::string &serial, const std::string &text, bool once)
{
    bench::setFault(*opened, serial, fault(text, once));
}

void TemporaryBench::replug(const std::string &serial)
{
    unplugDrive(*opened, serial);
    plugDrive(*opened, serial);
}

void TemporaryBench::edit(const std::string &serial, const std::function<void(Drive &drive)> &work)
{
    opened->change([&] {
        Drive edited = drive(serial);
        work(edited);
        opened->update(edited);
    });
}

DeviceInfo TemporaryBench::record(const std::string &serial)
{
    return records({drive(serial)}, directory(), imageDirectory()).front();
}

std::string TemporaryBench::flash(
    const std::string &serial, std::int32_t chipset, const std::string &image) const
{
    Store store(directory());
    return refusal([&] { Flash(store).run(serial, chipset, imageDirectory() + '/' + image); });
}

void TemporaryBench::execute(const std::string &statements) const
{
    SQLite::Database(file(), SQLite::OPEN_READWRITE).exec(statements);
}

Drive drive(const std::string &serial, const std::string &model)
{
    Drive drive = newDrive(modelNamed(model));
    drive.serial = drive.reportedSerial = serial;
    drive.runningFirmware = drive.flashFirmware;
    drive.runningConfiguration = drive.flashConfiguration;
    return drive;
}

Fault fault(const std::string &text, bool once)
{
    const std::size_t space = text.find(' ');
    return {
        faultNamed(text.substr(0, space)), space == std::string::npos ? "" : text.substr(space + 1), once};
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
