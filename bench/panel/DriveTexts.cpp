#include "bench/panel/DriveTexts.h"

#include "bench/core/Text.h"
#include "bench/panel/FaultMenu.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>

namespace bench {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("DriveTexts", text);
}

QString progressText(const Drive &drive)
{
    const std::int64_t left = std::max<std::int64_t>(0, drive.bytesToWrite - drive.bytesWritten);
    const QLocale locale;
    return tr("%1 of %2 bytes, %3 s left")
        .arg(locale.toString(qlonglong(drive.bytesWritten)), locale.toString(qlonglong(drive.bytesToWrite)),
            locale.toString(qlonglong((left + drive.flashRate - 1) / drive.flashRate)));
}

/// What the status of a drive that works means for a person.
QString readyText(const DeviceInfo &record)
{
    const bool firmware = record.firmwareStatus == Status::UpdateRequired;
    const bool configuration = record.configurationStatus == Status::UpdateRequired;
    if (record.firmwareStatus == Status::NotYetDetermined
        || record.configurationStatus == Status::NotYetDetermined) {
        return tr("Status not known yet");
    }
    if (record.chipsetType == Chipset::NotSupported) {
        return tr("No updater for its bridge");
    }
    if (firmware && configuration) {
        return tr("Needs firmware and configuration");
    }
    if (firmware) {
        return tr("Needs firmware");
    }
    if (configuration) {
        return tr("Needs configuration");
    }
    if (record.firmwareStatus == Status::UpToDate && record.configurationStatus == Status::UpToDate) {
        return tr("Up to date");
    }
    return tr("Status unknown");
}

} // namespace

QString shown(const std::string &bytes)
{
    return QString::fromStdString(escaped(bytes));
}

QString versionsText(const std::string &firmware, const std::string &configuration)
{
    return firmware.empty() ? tr("none") : tr("%1, conf. %2").arg(shown(firmware), shown(configuration));
}

QString stateText(const Drive &drive, const DeviceInfo &record)
{
    switch (drive.state()) {
    case DriveState::Unplugged:
        break;
    case DriveState::Silent:
        return tr("Does not answer");
    case DriveState::Writing:
        return progressText(drive);
    case DriveState::BootRom:
        return tr("Boot ROM: update it again");
    case DriveState::RestartNeeded:
        return drive.catalogueModel().restart == Restart::PowerButton
            ? tr("Updated: press power-cycle")
            : tr("Updated: unplug it and plug it in");
    case DriveState::Ready:
        return readyText(record);
    }
    return {};
}

QString faultsText(const std::vector<Fault> &faults)
{
    QStringList titles;
    for (const Fault &fault : faults) {
        const QString title = FaultMenu::title(fault.kind);
        titles.append(fault.once ? tr("%1, once").arg(title) : title);
    }
    return titles.isEmpty() ? QString() : tr("Fault: %1").arg(titles.join(QStringLiteral("; ")));
}

} // namespace bench
