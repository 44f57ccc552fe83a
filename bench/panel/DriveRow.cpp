#include "bench/panel/DriveRow.h"

#include "bench/core/Text.h"
#include "bench/panel/DriveButtons.h"
#include "bench/panel/ElidedLabel.h"
#include "bench/panel/FaultMenu.h"

#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>

#include <algorithm>

namespace bench {

namespace {

constexpr int PictureSize = 48;
constexpr int Spacing = 8;

QString tr(const char *text)
{
    return DriveRow::tr(text);
}

/// Bytes of a drive as one line.
QString shown(const std::string &bytes)
{
    return QString::fromStdString(escaped(bytes));
}

QString versionsText(const std::string &firmware, const std::string &configuration)
{
    return firmware.empty() ? tr("none") : tr("%1, conf. %2").arg(shown(firmware), shown(configuration));
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
    if (firmware || configuration) {
        return firmware ? tr("Needs firmware") : tr("Needs configuration");
    }
    return record.firmwareStatus == Status::UpToDate && record.configurationStatus == Status::UpToDate
        ? tr("Up to date")
        : tr("Status unknown");
}

/// What the drive needs or does; empty for one that is unplugged.
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
        return drive.catalogueModel().restart() == Restart::PowerButton
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

} // namespace

DriveRow::DriveRow(const std::string &benchDirectory, const Drive &drive, QWidget *parent) : QFrame(parent)
{
    setFrameStyle(int(QFrame::StyledPanel) | int(QFrame::Plain));
    auto *const lines = new QVBoxLayout(this);
    lines->setContentsMargins(Spacing, Spacing, Spacing, Spacing);
    lines->setSpacing(2);
    addFacts(lines, drive.catalogueModel());

    buttons = new DriveButtons(benchDirectory, drive, this);
    connect(buttons, &DriveButtons::pressed, this, &DriveRow::pressed);
    lines->addSpacing(Spacing / 2);
    lines->addWidget(buttons);
    lines->addSpacing(Spacing / 2);

    pluggedLabel = new ElidedLabel(this);
    lines->addWidget(pluggedLabel);
    stateLabel = new ElidedLabel(this);
    lines->addWidget(stateLabel);
    faultLabel = new ElidedLabel(this, QPalette::PlaceholderText);
    lines->addWidget(faultLabel);
    progress = new QProgressBar(this);
    progress->setTextVisible(false);
    progress->setFixedHeight(faultLabel->sizeHint().height());
    progress->setAccessibleName(tr("Flash of %1").arg(shown(drive.serial)));
    lines->addWidget(progress);
    updateLabel = new ElidedLabel(this, QPalette::PlaceholderText);
    lines->addWidget(updateLabel);
}

void DriveRow::addFacts(QVBoxLayout *lines, const Model &model)
{
    auto *const facts = new QGridLayout;
    facts->setHorizontalSpacing(Spacing);
    facts->setVerticalSpacing(2);
    facts->setColumnStretch(1, 1);
    facts->setColumnMinimumWidth(3, fontMetrics().horizontalAdvance(QStringLiteral("0.00, conf. 00 ")));
    lines->addLayout(facts);
    const auto addLabel = [this, facts](int line, int column, QPalette::ColorRole role) {
        auto *const label = new ElidedLabel(this, role);
        facts->addWidget(label, line, column);
        return label;
    };

    auto *const picture = new QLabel(this);
    picture->setFixedSize(PictureSize, PictureSize);
    picture->setPixmap(QIcon(QString::fromStdString(model.picture())).pixmap(PictureSize, PictureSize));
    facts->addWidget(picture, 0, 0, 3, 1);

    ElidedLabel *const name = addLabel(0, 1, QPalette::WindowText);
    QFont bold = font();
    bold.setBold(true);
    name->setFont(bold);
    name->setText(QString::fromLatin1(model.name));
    serialLabel = addLabel(1, 1, QPalette::WindowText);
    bridgeLabel = addLabel(2, 1, QPalette::PlaceholderText);

    const QStringList captions{tr("Running"), tr("In flash"), tr("On offer")};
    for (int line = 0; line < captions.size(); ++line) {
        auto *const caption = new QLabel(captions.at(line), this);
        caption->setForegroundRole(QPalette::PlaceholderText);
        facts->addWidget(caption, line, 2);
    }
    runningLabel = addLabel(0, 3, QPalette::WindowText);
    flashLabel = addLabel(1, 3, QPalette::WindowText);
    offerLabel = addLabel(2, 3, QPalette::WindowText);
}

bool DriveRow::hasOpenMenu() const
{
    return buttons->hasOpenMenu();
}

void DriveRow::showDrive(const Drive &drive, const DeviceInfo &record)
{
    buttons->showDrive(drive);
    const bool isWritten = drive.state() == DriveState::Writing;
    serialLabel->setText(drive.reportedSerial == drive.serial
            ? shown(drive.serial)
            : tr("%1, goes by %2").arg(shown(drive.serial), shown(drive.reportedSerial)));
    bridgeLabel->setText(tr("%1, %2").arg(QString::fromLatin1(drive.catalogueModel().busName()),
        drive.chipset == Chipset::NotSupported ? tr("no updater")
                                               : QString::fromLatin1(bridgeName(drive.chipset))));
    runningLabel->setText(
        drive.plugged ? versionsText(drive.runningFirmware, drive.runningConfiguration) : tr("–"));
    flashLabel->setText(isWritten ? tr("being written")
            : drive.incomplete    ? tr("incomplete")
                                  : versionsText(drive.flashFirmware, drive.flashConfiguration));
    offerLabel->setText(shown(record.newFirmwareVersion));
    pluggedLabel->setText(!drive.plugged ? tr("Unplugged")
            : drive.mounted              ? tr("Plugged in, volumes mounted")
                                         : tr("Plugged in, volumes not mounted"));
    const int secondsUntilBack = buttons->secondsUntilBack();
    stateLabel->setText(secondsUntilBack > 0 ? tr("Comes back by itself in %1 s").arg(secondsUntilBack)
                                             : stateText(drive, record));
    const std::string lastUpdate = drive.lastUpdateText();
    updateLabel->setText(
        lastUpdate.empty() ? QString() : tr("Last update: %1").arg(QString::fromStdString(lastUpdate)));
    faultLabel->setText(faultsText(drive.faults));
    progress->setMaximum(static_cast<int>(std::max<std::int64_t>(1, drive.bytesToWrite)));
    progress->setValue(static_cast<int>(drive.bytesWritten));
    progress->setVisible(isWritten);
    faultLabel->setVisible(!isWritten);
}

void DriveRow::showGone()
{
    pluggedLabel->clear();
    stateLabel->setText(tr("No longer on the bench"));
    buttons->setEnabled(false);
}

} // namespace bench
