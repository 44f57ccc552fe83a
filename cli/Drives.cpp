// SPDX-License-Identifier: MIT
#include "cli/Drives.h"

#include "devices/DeviceTexts.h"
#include "devices/Restart.h"
#include "devices/SettledDevices.h"

#include <DeviceDiscovery.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>

namespace {

/// Stand for what a sentence would take as its own in a drive's text: no characters that printable() leaves.
constexpr char Bracket = '\x01';
constexpr char Percent = '\x02';

QString statusName(std::int32_t status)
{
    constexpr const char *Names[] = {"not-determined", "update-required", "up-to-date"};
    return status >= Status::NotYetDetermined && status <= Status::UpToDate ? Names[status] : "unknown";
}

} // namespace

QStringList outdatedParts(const DeviceInfo &device)
{
    QStringList parts;
    if (device.chipsetType != Chipset::NotSupported && isSettled(device)) {
        if (device.firmwareStatus == Status::UpdateRequired) {
            parts.append("firmware");
        }
        if (device.configurationStatus == Status::UpdateRequired) {
            parts.append("configuration");
        }
    }
    return parts;
}

QString restartName(const DeviceInfo &device)
{
    constexpr const char *Names[] = {"unplug", "power-button", "not-needed", "not-known"};
    return Names[int(restartOf(device.chipsetType, device.productId))];
}

std::vector<DeviceInfo> attachedDrives(QDeadlineTimer deadline)
{
    std::vector<DeviceInfo> devices;
    DeviceDiscovery discovery;
    findSettledDevices(discovery, devices, deadline);
    return devices;
}

QString serialNumberOf(const DeviceInfo &device)
{
    return DeviceTexts::printable(device.serialNumber);
}

QString plainText(const DeviceInfo &device, DeviceText text)
{
    DeviceInfo printable = device;
    for (std::string *field :
        {&printable.modelName, &printable.firmwareVersion, &printable.newFirmwareVersion}) {
        QString content = DeviceTexts::printable(*field);
        *field = content.replace('<', Bracket).replace('%', Percent).toLatin1().toStdString();
    }
    return text(printable).remove("<b>").remove("</b>").replace(Bracket, '<').replace(Percent, '%');
}

QJsonObject describe(const DeviceInfo &device)
{
    return {
        {"modelName", DeviceTexts::printable(device.modelName)},
        {"vendorId", device.vendorId},
        {"productId", device.productId},
        {"chipset", device.chipsetType},
        {"firmwareVersion", DeviceTexts::printable(device.firmwareVersion)},
        {"newFirmwareVersion", DeviceTexts::printable(device.newFirmwareVersion)},
        {"firmwareFileName", DeviceTexts::printable(device.firmwareFileName)},
        {"firmwareStatus", statusName(device.firmwareStatus)},
        {"configurationStatus", statusName(device.configurationStatus)},
        {"supported", device.chipsetType != Chipset::NotSupported},
        {"outdated", QJsonArray::fromStringList(outdatedParts(device))},
        {"restart", restartName(device)},
    };
}

void printJson(const QJsonObject &document, bool onOneLine)
{
    const auto format = onOneLine ? QJsonDocument::Compact : QJsonDocument::Indented;
    std::printf("%s%s", QJsonDocument(document).toJson(format).constData(), onOneLine ? "\n" : "");
    std::fflush(stdout);
}
