// SPDX-License-Identifier: MIT
#include "cli/Flashing.h"

#include "cli/CommandLine.h"
#include "cli/Drives.h"
#include "cli/Power.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "devices/DeviceTexts.h"
#include "devices/Restart.h"
#include "devices/SettledDevices.h"
#include "update/DeviceUpdate.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <future>

namespace {

constexpr std::chrono::milliseconds Tick(100);
constexpr int TicksBetweenQueries = 10;

bool needsRestart(const DeviceInfo &device)
{
    return restartOf(device.chipsetType, device.productId) != Restart::NotNeeded;
}

/// Flashes the drive on a thread of its own, as its libraries are used to, and shows the time gone by.
bool flashOne(const DeviceInfo &device, Progress &progress)
{
    const std::string program = QFile::encodeName(QCoreApplication::applicationFilePath()).toStdString();
    const QString serialNumber = serialNumberOf(device);
    if (!progress.isLive()) {
        progress.tell("writing", device, "is being written");
    }
    QElapsedTimer clock;
    clock.start();
    bool isWarned = false;
    auto result = std::async(std::launch::async, updateDevice, device, program);
    while (result.wait_for(Tick) != std::future_status::ready) {
        if (isEndRequested() && !isWarned) {
            isWarned = true;
            progress.warn(
                serialNumber + " is being written and is finished first; nothing after it is begun");
        }
        progress.showLive(clock.elapsed(), "writing " + DeviceTexts::driveName(device));
    }
    if (!result.get()) {
        progress.tell("failed", device, plainText(device, DeviceTexts::failure), {{"begun", true}});
        return false;
    }
    progress.tell("written", device,
        needsRestart(device) ? QString("written in %1 s").arg(clock.elapsed() / 1000)
                             : plainText(device, DeviceTexts::updated),
        {{"seconds", double(clock.elapsed()) / 1000}});
    return true;
}

bool runsWhatWasOffered(const DeviceInfo &now, const DeviceInfo &before)
{
    return now.firmwareVersion == before.newFirmwareVersion && outdatedParts(now).isEmpty();
}

} // namespace

Flashed flash(const std::vector<DeviceInfo> &devices, Progress &progress)
{
    Flashed flashed;
    const WakeLock wakeLock;
    if (!wakeLock.problem.isEmpty()) {
        progress.warn("nothing keeps this machine from going to sleep meanwhile: " + wakeLock.problem);
    }
    for (const DeviceInfo &device : devices) {
        if (isEndRequested()) {
            progress.tell("failed", device, "is not begun", {{"begun", false}});
            flashed.hasFailed = true;
        } else if (!hasImageName(device)) {
            progress.tell(
                "failed", device, "is not begun: the name of its image is no file name", {{"begun", false}});
            flashed.hasFailed = true;
        } else if (!flashOne(device, progress)) {
            flashed.hasFailed = true;
        } else if (needsRestart(device)) {
            flashed.toRestart.push_back(device);
        }
    }
    return flashed;
}

int waitForRestarts(const std::vector<DeviceInfo> &devices, QDeadlineTimer deadline, Progress &progress)
{
    struct Awaited
    {
        DeviceInfo device;
        bool isGone;
    };
    std::vector<Awaited> awaited;
    awaited.reserve(devices.size());
    for (const DeviceInfo &device : devices) {
        awaited.push_back({device, false});
    }
    int status = Done;
    QElapsedTimer clock;
    clock.start();
    for (int tick = 0; !awaited.empty() && !deadline.hasExpired() && !isEndRequested(); ++tick) {
        progress.showLive(clock.elapsed(), "waiting for " + DeviceTexts::driveName(awaited.front().device));
        QThread::msleep(Tick.count());
        if (tick % TicksBetweenQueries != 0) {
            continue;
        }
        // One query, since what is not settled yet is not waited for.
        const std::vector<DeviceInfo> attached = attachedDrives(QDeadlineTimer(0));
        const auto isDone = [&](Awaited &drive) {
            const auto now = std::find_if(attached.begin(), attached.end(),
                [&](const DeviceInfo &device) { return device.serialNumber == drive.device.serialNumber; });
            if (now == attached.end()) {
                drive.isGone = true;
                return false;
            }
            if (!drive.isGone || !isSettled(*now)) {
                return false;
            }
            const bool isUpdated = runsWhatWasOffered(*now, drive.device);
            progress.tell("restarted", *now,
                isUpdated ? plainText(*now, DeviceTexts::updated)
                          : "came back and does not run what was offered",
                {{"asOffered", isUpdated}});
            status = isUpdated ? status : Failed;
            return true;
        };
        awaited.erase(std::remove_if(awaited.begin(), awaited.end(), isDone), awaited.end());
    }
    if (status == Done && !awaited.empty()) {
        status = ToBeRestarted;
    }
    return status;
}
