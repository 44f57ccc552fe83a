// SPDX-License-Identifier: MIT
#include "cli/CommandLine.h"
#include "cli/CompanionCheck.h"
#include "cli/Drives.h"
#include "cli/Flashing.h"
#include "cli/Power.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "companion/CompanionTexts.h"
#include "devices/DeviceTexts.h"
#include "devices/SettledDevices.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QLockFile>
#include <QTextStream>

#include <cstdio>
#include <memory>

#include <unistd.h>

namespace {

constexpr double LowestCharge = 20; // percent

struct Plan
{
    int status = Done; ///< WrongUse: nothing may be written
    std::vector<DeviceInfo> devices; ///< to be written
};

bool isUpToDate(const DeviceInfo &device)
{
    return device.firmwareStatus == Status::UpToDate && device.configurationStatus == Status::UpToDate;
}

/// Tells what is to be done with each drive. No serial numbers: all that need an update.
Plan makePlan(const QStringList &serialNumbers, QDeadlineTimer deadline, Progress &progress)
{
    Plan plan;
    QStringList missing = serialNumbers;
    for (const DeviceInfo &device : attachedDrives(deadline)) {
        const QString serialNumber = serialNumberOf(device);
        const bool isNamed = serialNumbers.contains(serialNumber);
        if (!isNamed && !serialNumbers.isEmpty()) {
            continue;
        }
        missing.removeAll(serialNumber);
        QString sentence = plainText(device, DeviceTexts::warning);
        bool isWritten = !outdatedParts(device).isEmpty();
        if (!isWritten) {
            sentence = plainText(device, DeviceTexts::firmwareStatus) + ' '
                + plainText(device, DeviceTexts::configurationStatus);
        }
        if (device.chipsetType == Chipset::NotSupported) {
            if (isNamed) {
                plan.status = refuse(serialNumber + " cannot be updated; nothing is written", WrongUse);
            }
        } else if (!isSettled(device)) {
            sentence = "its status is not yet determined";
            plan.status = qMax(plan.status, int(Failed));
        } else if (!isWritten && !isUpToDate(device)) {
            isWritten = isNamed;
            sentence += isNamed ? "" : " It is left alone; give its serial number to update it.";
        }
        QJsonObject details = describe(device);
        details["write"] = isWritten;
        progress.tell("planned", device, sentence.trimmed(), details);
        if (isWritten) {
            plan.devices.push_back(device);
        }
    }
    for (const QString &serialNumber : missing) {
        plan.status = refuse("there is no drive " + serialNumber + "; nothing is written", WrongUse);
    }
    return plan;
}

/// True when the person says yes.
bool ask(std::size_t drives)
{
    for (const QString &line : {DeviceTexts::doNotDisconnect(), DeviceTexts::harmOfDisconnecting()}) {
        std::printf("%s\n", qPrintable(QString(line).remove("<b>").remove("</b>")));
    }
    std::printf(drives == 1 ? "Update this drive? [y/N] " : "Update these %zu drives? [y/N] ", drives);
    std::fflush(stdout);
    const QString answer = QTextStream(stdin).readLine().trimmed().toLower();
    return answer == "y" || answer == "yes";
}

/// Keeps other commands from these drives; tells which of them another one has, and is then empty.
std::vector<std::unique_ptr<QLockFile>> lock(const std::vector<DeviceInfo> &devices)
{
    std::vector<std::unique_ptr<QLockFile>> locks;
    for (const DeviceInfo &device : devices) {
        const QByteArray name =
            QCryptographicHash::hash(device.serialNumber.c_str(), QCryptographicHash::Sha1).toHex();
        locks.push_back(std::make_unique<QLockFile>(QDir::tempPath() + "/tarvo-firmware-" + name + ".lock"));
        locks.back()->setStaleLockTime(0);
        if (!locks.back()->tryLock()) {
            refuse(serialNumberOf(device)
                    + (locks.back()->error() == QLockFile::LockFailedError
                            ? ": another command is updating it; nothing is written"
                            : ": no lock file can be made in " + QDir::tempPath() + "; nothing is written"),
                Failed);
            return {};
        }
    }
    return locks;
}

int update(const QCommandLineParser &options, Progress &progress)
{
    const std::optional<bool> companion = isCompanionInstalled();
    if (!companion) {
        return refuse("whether Tarvo Quaydesk is installed cannot be found out: no file can be written in "
                + QDir::tempPath(),
            Failed);
    }
    if (*companion) {
        return refuse(
            QCoreApplication::translate("MainWindow", CompanionTexts::Installed), CompanionInstalled);
    }
    const Plan plan = makePlan(options.positionalArguments(), deadline(options, "timeout"), progress);
    if (plan.status == WrongUse || plan.devices.empty() || options.isSet("dry-run")) {
        return plan.status;
    }
    const std::optional<double> charge = options.isSet("on-battery") ? std::nullopt : batteryCharge();
    if (charge && *charge < LowestCharge) {
        return refuse(
            QString("this machine runs on its battery, which is at %1 %; connect it to mains or give "
                    "--on-battery")
                .arg(*charge),
            Failed);
    }
    if (!options.isSet("yes") && !ask(plan.devices.size())) {
        return refuse("nothing is written", Failed);
    }
    // From the first lock on: a lock file is not left behind.
    holdSignals();
    const auto locks = lock(plan.devices);
    if (locks.empty()) {
        return Failed;
    }

    const Flashed flashed = flash(plan.devices, progress);
    for (const DeviceInfo &device : flashed.toRestart) {
        const QString instruction = plainText(device, DeviceTexts::success);
        progress.tell("waiting", device,
            instruction.isEmpty() ? "Restart it; how, is not known." : instruction,
            {{"instruction", instruction}});
    }
    int status = flashed.toRestart.empty() ? Done : ToBeRestarted;
    if (options.isSet("wait")) {
        status = waitForRestarts(flashed.toRestart, deadline(options, "wait"), progress);
    }
    return flashed.hasFailed || plan.status == Failed ? Failed : status;
}

} // namespace

int updateDrives(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription("Writes new firmware and configuration into drives, one after the "
                                     "other, and says how each is restarted.");
    parser.addPositionalArgument("SERIAL", "The serial numbers of the drives.", "SERIAL...");
    parser.addOptions({{"all", "Update all drives that need it."}, {"yes", "Do not ask."},
        {"dry-run", "Only say what would be done."},
        {"wait",
            "Wait for the restarts, and say whether the drives run the new firmware; without =SECONDS for a "
            "day.",
            "SECONDS", "86400"},
        {"on-battery", "Update although the battery is low."},
        {"json", "Print one JSON event a line; needs --yes or --dry-run."}});
    QStringList complete = arguments;
    complete.replaceInStrings(QRegularExpression("^--wait$"), "--wait=86400");
    if (const auto end = readArguments(parser, "update", complete,
            "  tarvo-firmware update --all\n  tarvo-firmware update TV0001PEBBLE --yes --wait=120\n")) {
        return *end;
    }
    if (parser.isSet("all") != parser.positionalArguments().isEmpty()) {
        return refuse("name the drives to update by their serial numbers, or give --all", WrongUse);
    }
    const bool isAsked = !parser.isSet("yes") && !parser.isSet("dry-run");
    if (isAsked && (parser.isSet("json") || isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0)) {
        return refuse("nobody can be asked here: give --yes or --dry-run", WrongUse);
    }
    Progress progress(parser.isSet("json"));
    return progress.finish(update(parser, progress));
}
