// SPDX-License-Identifier: MIT
#include "devices/DeviceTexts.h"

#include "devices/Restart.h"

QString DeviceTexts::textFrom(const std::string &bytes)
{
    return QString::fromLatin1(bytes.c_str());
}

QString DeviceTexts::printable(const std::string &bytes)
{
    QString result;
    for (const QChar character : textFrom(bytes)) {
        const bool isPlain = character.isPrint() && character != '\\';
        result += isPlain ? QString(character) : QString("\\x%1").arg(character.unicode(), 2, 16, QChar('0'));
    }
    return result;
}

QString DeviceTexts::driveName(const DeviceInfo &device)
{
    return tr("Tarvo %1, serial number %2").arg(printable(device.modelName), printable(device.serialNumber));
}

QString DeviceTexts::modelName(const DeviceInfo &device)
{
    return QString("Tarvo %1").arg(textFrom(device.modelName));
}

QString DeviceTexts::firmwareVersion(const DeviceInfo &device)
{
    if (device.chipsetType == Chipset::NotSupported) {
        return {};
    }
    switch (device.firmwareStatus) {
    case Status::UpdateRequired:
        return QString("%1 <b>%2</b> => <b>%3</b> %4")
            .arg(tr("(firmware version:"))
            .arg(textFrom(device.firmwareVersion))
            .arg(textFrom(device.newFirmwareVersion))
            .arg(tr(")"));
    case Status::UpToDate:
        return QString("%1 <b>%2</b> %3")
            .arg(tr("(firmware version:"))
            .arg(textFrom(device.firmwareVersion))
            .arg(tr(")"));
    default:
        return QString("<b>%1</b>").arg(tr("Unknown firmware version !"));
    }
}

QString DeviceTexts::firmwareStatus(const DeviceInfo &device)
{
    if (device.chipsetType == Chipset::NotSupported) {
        return QString("<b>%1</b>").arg(tr("Device not supported !"));
    }
    switch (device.firmwareStatus) {
    case Status::UpdateRequired:
        return tr("Firmware: Update required!");
    case Status::UpToDate:
        return tr("Firmware: Up to date.");
    default:
        return tr("Firmware: Unknown status!");
    }
}

QString DeviceTexts::configurationStatus(const DeviceInfo &device)
{
    if (device.chipsetType == Chipset::NotSupported) {
        return {};
    }
    switch (device.configurationStatus) {
    case Status::UpdateRequired:
        return tr("Configuration: Update required!");
    case Status::UpToDate:
        return tr("Configuration: Up to date.");
    default:
        return tr("Configuration: Unknown status!");
    }
}

QString DeviceTexts::instructions()
{
    return QString("%1<b>%2</b>%3 %4<b>%5</b>%6")
        .arg(tr("To update your device, press "))
        .arg(tr("\"Update\""))
        .arg(tr(" button."))
        .arg(tr("To update later, press "))
        .arg(tr("\"Cancel\""))
        .arg(tr(" button."));
}

QString DeviceTexts::warning(const DeviceInfo &device)
{
    const bool configurationRequired = device.configurationStatus == Status::UpdateRequired;
    if (device.firmwareStatus == Status::UpdateRequired) {
        return QString("%1<b>%2</b>%3<b>%4</b>%5<b>%6</b>%7")
            .arg(tr("You are about to update your Tarvo "))
            .arg(textFrom(device.modelName))
            .arg(configurationRequired ? tr(" firmware and configuration. (\"") : tr(" firmware. (\""))
            .arg(textFrom(device.firmwareVersion))
            .arg(tr("\" => \""))
            .arg(textFrom(device.newFirmwareVersion))
            .arg(tr("\")"));
    }
    if (configurationRequired) {
        return QString("%1<b>%2</b>%3")
            .arg(tr("You are about to update your Tarvo "))
            .arg(textFrom(device.modelName))
            .arg(tr(" configuration."));
    }
    return {};
}

QString DeviceTexts::doNotDisconnect()
{
    return QString("<b>%1</b>").arg(tr("DO NOT disconnect the device during the firmware update."));
}

QString DeviceTexts::harmOfDisconnecting()
{
    return QString("<b>%1</b>").arg(tr("Doing so may cause irreparable harm to your data and/or disk."));
}

QString DeviceTexts::updated(const DeviceInfo &device)
{
    return QString("%1<b>%2</b>%3")
        .arg(tr("Your Tarvo "))
        .arg(textFrom(device.modelName))
        .arg(tr(" has been successfully updated."));
}

QString DeviceTexts::success(const DeviceInfo &device)
{
    if (device.chipsetType == Chipset::NoUpdater || device.chipsetType == Chipset::OxSemiFireWire944) {
        return tr("Your drive is now ready for use.");
    }
    QString opening;
    switch (restartOf(device.chipsetType, device.productId)) {
    case Restart::Unplug:
        opening = tr("Please unplug and replug your Tarvo ");
        break;
    case Restart::PowerButton:
        opening = tr("Please use the power button on your Tarvo ");
        break;
    default:
        return {};
    }
    return QString("%1<b>%2</b>%3")
        .arg(opening)
        .arg(textFrom(device.modelName))
        .arg(tr(" hard drive to power off and power on the device."));
}

QString DeviceTexts::failure(const DeviceInfo &device)
{
    return QString("%1<b>%2</b>%3")
        .arg(tr("Error while updating your Tarvo "))
        .arg(textFrom(device.modelName))
        .arg(tr(" device. Please retry."));
}
