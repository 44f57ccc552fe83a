#include "bench/panel/DriveRow.h"

#include "bench/core/Text.h"
#include "bench/panel/DriveButtons.h"
#include "bench/panel/OnBench.h"
#include "bench/panel/TextLabel.h"

#include <QGridLayout>
#include <QIcon>
#include <QProgressBar>

#include <algorithm>

namespace bench {

namespace {

constexpr int PictureSize = 48;
constexpr int Spacing = 8;
constexpr std::array<const char *, 3> VersionCaptions = {"Running", "In flash", "On offer"};

QString tr(const char *text)
{
    return DriveRow::tr(text);
}

QString versionsText(const std::string &firmware, const std::string &configuration)
{
    return firmware.empty() ? tr("none")
                            : tr("%1, conf. %2").arg(shownText(firmware), shownText(configuration));
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

/// What the drive needs or does.
QString stateText(const Drive &drive, const DeviceInfo &record, int secondsUntilBack)
{
    if (secondsUntilBack > 0) {
        return tr("Unplugged, comes back by itself in %1 s").arg(secondsUntilBack);
    }
    const DriveState state = drive.state();
    if (state == DriveState::Ready) {
        return readyText(record);
    }
    if (state == DriveState::RestartNeeded) {
        return drive.catalogueModel().restart() == Restart::PowerButton ? tr("Updated: press Power-cycle")
                                                                        : tr("Updated: press Replug");
    }
    const QString text = QString::fromLatin1(bench::stateText(state));
    return text.left(1).toUpper() + text.mid(1) + (drive.isInBootRom() ? tr(": update it again") : QString());
}

/// The faults as the command takes them; empty for none.
QString faultsText(const Faults &faults)
{
    QStringList texts;
    for (const Fault &fault : faults) {
        texts.append(QString::fromStdString(faultText(fault)));
    }
    return texts.isEmpty() ? QString() : tr("Faults: %1").arg(texts.join(QStringLiteral(", ")));
}

void showWhereNotEmpty(TextLabel *label, const QString &text)
{
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

} // namespace

DriveRow::DriveRow(const std::string &benchDirectory, const Drive &drive, QWidget *parent) : QFrame(parent)
{
    const QString serial = shownText(drive.serial);
    setAccessibleName(tr("%1 %2").arg(QString::fromStdString(drive.model), serial));
    setFrameStyle(int(QFrame::StyledPanel) | int(QFrame::Plain));
    auto *const lines = new QVBoxLayout(this);
    lines->setContentsMargins(Spacing, Spacing / 2, Spacing, Spacing / 2);
    lines->setSpacing(2);
    addFacts(lines, drive.catalogueModel());
    addState(lines, serial);

    buttons = new DriveButtons(benchDirectory, drive, this);
    connect(buttons, &DriveButtons::pressed, this, &DriveRow::pressed);
    lines->addWidget(buttons);

    faultLabel = new TextLabel(this, QPalette::PlaceholderText);
    lines->addWidget(faultLabel);
    updateLabel = new TextLabel(this, QPalette::PlaceholderText);
    lines->addWidget(updateLabel);
}

void DriveRow::addFacts(QVBoxLayout *lines, const Model &model)
{
    auto *const facts = new QGridLayout;
    facts->setHorizontalSpacing(Spacing);
    facts->setVerticalSpacing(0);
    facts->setColumnStretch(1, 1);
    facts->setColumnMinimumWidth(3, fontMetrics().horizontalAdvance(QStringLiteral("0.00, conf. 00 ")));
    lines->addLayout(facts);
    const auto addLabel = [this, facts](int line, int column, QPalette::ColorRole role) {
        auto *const label = new TextLabel(this, role);
        facts->addWidget(label, line, column);
        return label;
    };

    auto *const picture = new QLabel(this);
    picture->setFixedSize(PictureSize, PictureSize);
    picture->setPixmap(QIcon(QString::fromStdString(model.picture())).pixmap(PictureSize, PictureSize));
    picture->setAccessibleName(tr("Picture: %1").arg(QLatin1String(model.body)));
    facts->addWidget(picture, 0, 0, 3, 1);

    TextLabel *const name = addLabel(0, 1, QPalette::WindowText);
    QFont bold = font();
    bold.setBold(true);
    name->setFont(bold);
    name->setText(QString::fromLatin1(model.name));
    serialLabel = addLabel(1, 1, QPalette::WindowText);
    bridgeLabel = addLabel(2, 1, QPalette::PlaceholderText);

    for (std::size_t line = 0; line < VersionCaptions.size(); ++line) {
        auto *const caption = new QLabel(tr(VersionCaptions[line]), this);
        caption->setForegroundRole(QPalette::PlaceholderText);
        facts->addWidget(caption, static_cast<int>(line), 2);
        versionLabels[line] = addLabel(static_cast<int>(line), 3, QPalette::WindowText);
        caption->setBuddy(versionLabels[line]);
    }
}

void DriveRow::addState(QVBoxLayout *lines, const QString &serial)
{
    stateLabel = new TextLabel(this);
    progress = new QProgressBar(this);
    progress->setFixedHeight(stateLabel->sizeHint().height());
    progress->setAccessibleName(tr("Flash of %1").arg(serial));
    auto *const line = new QHBoxLayout;
    line->setSpacing(Spacing);
    line->addWidget(stateLabel, 2);
    line->addWidget(progress, 1);
    lines->addLayout(line);
}

void DriveRow::showDrive(const Drive &drive, const DeviceInfo &record)
{
    buttons->showDrive(drive);
    const bool isWritten = drive.state() == DriveState::Writing;
    serialLabel->setText(drive.reportedSerial == drive.serial
            ? shownText(drive.serial)
            : tr("%1, goes by %2").arg(shownText(drive.serial), shownText(drive.reportedSerial)));
    bridgeLabel->setText(tr("%1, %2").arg(QString::fromLatin1(drive.catalogueModel().busName()),
        drive.chipset == Chipset::NotSupported ? tr("no updater")
                                               : QString::fromLatin1(bridgeName(drive.chipset))));
    const std::array<QString, 3> versions = {
        drive.plugged ? versionsText(drive.runningFirmware, drive.runningConfiguration) : tr("–"),
        isWritten              ? tr("being written")
            : drive.incomplete ? tr("incomplete")
                               : versionsText(drive.flashFirmware, drive.flashConfiguration),
        shownText(textFromBytes(record.newFirmwareVersion)),
    };
    for (std::size_t i = 0; i < versions.size(); ++i) {
        if (versionLabels[i]->text() != versions[i]) {
            versionLabels[i]->setText(versions[i]);
            versionLabels[i]->setAccessibleName(tr(VersionCaptions[i]) + ' ' + versions[i]);
        }
    }
    const QString state = stateText(drive, record, buttons->secondsUntilBack());
    stateLabel->setText(drive.isAttached() && !drive.mounted && !drive.isInBootRom()
            ? tr("%1; volumes not mounted").arg(state)
            : state);
    progress->setValue(
        static_cast<int>(100 * drive.bytesWritten / std::max<std::int64_t>(1, drive.bytesToWrite)));
    progress->setVisible(isWritten);
    showWhereNotEmpty(faultLabel, faultsText(drive.faults));
    const std::string lastUpdate = drive.lastUpdateText();
    showWhereNotEmpty(updateLabel,
        lastUpdate.empty() ? QString() : tr("Last update: %1").arg(QString::fromStdString(lastUpdate)));
}

} // namespace bench
