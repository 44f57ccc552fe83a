// SPDX-License-Identifier: MIT
#include "Version.h"
#include "cli/CommandLine.h"
#include "cli/CompanionCheck.h"
#include "cli/Drives.h"
#include "update/DeviceUpdate.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSysInfo>

namespace {

QJsonObject describeImage(const DeviceInfo &device)
{
    const std::string program = QFile::encodeName(QCoreApplication::applicationFilePath()).toStdString();
    QFile file(QFile::decodeName(imagePath(device, program).c_str()));
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool exists = hasImageName(device) && QFileInfo(file).isFile();
    const bool readable = exists && file.open(QFile::ReadOnly) && hash.addData(&file);
    QJsonObject image = {{"exists", exists}, {"readable", readable}};
    if (readable) {
        image["size"] = file.size();
        image["sha256"] = QString(hash.result().toHex());
    }
    return image;
}

} // namespace

int reportOnDrives(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Prints one JSON document about this computer's drives for a support request.");
    parser.addOption({"serials", "Name the serial numbers of the drives too."});
    if (const auto end =
            readArguments(parser, "report", arguments, "  tarvo-firmware report > report.json\n")) {
        return *end;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return refuse("report takes no drives: it is about them all", WrongUse);
    }

    const std::optional<bool> companion = isCompanionInstalled();
    QJsonArray drives;
    for (const DeviceInfo &device : attachedDrives(deadline(parser, "timeout"))) {
        QJsonObject drive = describe(device);
        drive["image"] = describeImage(device);
        if (parser.isSet("serials")) {
            drive["serialNumber"] = serialNumberOf(device);
        }
        drives.append(drive);
    }
    printJson({
        {"schemaVersion", 1},
        {"version", TarvoVersion},
        {"operatingSystem", QSysInfo::prettyProductName()},
        {"kernel", QSysInfo::kernelType() + ' ' + QSysInfo::kernelVersion()},
        {"architecture", QSysInfo::currentCpuArchitecture()},
        {"qt", qVersion()},
        {"companionInstalled", companion ? QJsonValue(*companion) : QJsonValue()},
        {"drives", drives},
    });
    return Done;
}
