// SPDX-License-Identifier: MIT
#include "cli/CommandLine.h"
#include "cli/Drives.h"
#include "devices/DeviceTexts.h"
#include "devices/SettledDevices.h"

#include <QCommandLineParser>
#include <QJsonArray>

#include <cstdio>

namespace {

void print(const DeviceInfo &device)
{
    std::printf("%s\n", qPrintable(DeviceTexts::driveName(device)));
    for (const DeviceText text :
        {DeviceTexts::firmwareVersion, DeviceTexts::firmwareStatus, DeviceTexts::configurationStatus}) {
        const QString line = plainText(device, text);
        if (!line.isEmpty()) {
            std::printf("  %s\n", qPrintable(line));
        }
    }
    const QStringList parts = outdatedParts(device);
    if (!parts.isEmpty()) {
        std::printf("  An update writes: %s\n", qPrintable(parts.join(" and ")));
    }
    std::printf("  Restart: %s\n", qPrintable(restartName(device)));
}

} // namespace

int listDrives(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Lists the attached drives: what they run, what is on offer, and how they are restarted.");
    parser.addOption({"json", "Print one JSON document."});
    if (const auto end = readArguments(
            parser, "list", arguments, "  tarvo-firmware list\n  tarvo-firmware list --json --timeout 5\n")) {
        return *end;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return refuse("list takes no drives: it lists them all", WrongUse);
    }

    const std::vector<DeviceInfo> devices = attachedDrives(deadline(parser, "timeout"));
    QJsonArray drives;
    const bool isJson = parser.isSet("json");
    int status = Done;
    for (const DeviceInfo &device : devices) {
        if (!isSettled(device)) {
            status = refuse(serialNumberOf(device) + ": its status is not yet determined", Failed);
        }
        if (isJson) {
            QJsonObject drive = describe(device);
            drive["serialNumber"] = serialNumberOf(device);
            drives.append(drive);
        } else if (isSettled(device)) {
            print(device);
        }
    }
    if (isJson) {
        printJson({{"schemaVersion", 1}, {"drives", drives}});
    } else if (devices.empty()) {
        std::printf("No drive is attached.\n");
    }
    return status;
}
