// SPDX-License-Identifier: MIT
#include "bench/panel/DriveRow.h"

#include "bench/core/LifeCycle.h"
#include "bench/panel/FaultMenu.h"
#include "bench/panel/OnBench.h"
#include "bench/panel/TextLabel.h"

#include <QGridLayout>
#include <QIcon>
#include <QProgressBar>
#include <QPushButton>

#include <algorithm>
#include <chrono>
#include <utility>

namespace bench {

namespace {

constexpr std::chrono::milliseconds AwayTime = std::chrono::seconds(AwaySeconds);
constexpr int PictureSize = 48;
constexpr int Spacing = 8;
constexpr std::array<const char *, 3> VersionCaptions = {"Running", "In flash", "On offer"};

QString tr(const char *text)
{
    return DriveRow::tr(text);
}

QString shortVersions(const std::string &firmware, const std::string &configuration)
{
    return firmware.empty() ? tr("none")
                            : tr("%1, conf. %2").arg(shownText(firmware), shownText(configuration));
}

/// What the status of a drive that works means for a person.
QString readyText(const DeviceInfo &record)
{
    const std::int32_t firmware = record.firmwareStatus;
    const std::int32_t configuration = record.configurationStatus;
    if (firmware == Status::NotYetDetermined || configuration == Status::NotYetDetermined) {
        return tr("Status not known yet");
    }
    if (record.chipsetType == Chipset::NotSupported) {
        return tr("No updater for its bridge");
    }
    if (firmware == Status::UpdateRequired) {
        return configuration == Status::UpdateRequired ? tr("Needs firmware and configuration")
                                                       : tr("Needs firmware");
    }
    if (configuration == Status::UpdateRequired) {
        return tr("Needs configuration");
    }
    return firmware == Status::UpToDate && configuration == Status::UpToDate ? tr("Up to date")
                                                                             : tr("Status unknown");
}

/// What stands behind the captions.
std::array<QString, 3> versionTexts(const Drive &drive, const DeviceInfo &record)
{
    return {
        drive.plugged ? shortVersions(drive.runningFirmware, drive.runningConfiguration) : tr("–"),
        drive.incomplete ? tr("incomplete") : shortVersions(drive.flashFirmware, drive.flashConfiguration),
        shownText(textFromBytes(record.newFirmwareVersion)),
    };
}

/// What the drive needs or does.
QString situationText(const Drive &drive, const DeviceInfo &record, int secondsUntilBack)
{
    if (secondsUntilBack > 0) {
        return tr("Unplugged, comes back by itself in %1 s").arg(secondsUntilBack);
    }
    const DriveState state = drive.state();
    QString text = QString::fromLatin1(bench::stateText(state));
    text[0] = text[0].toUpper();
    if (state == DriveState::BootRom) {
        text = tr("Boot ROM: update it again");
    } else if (state == DriveState::RestartNeeded) {
        text = drive.catalogueModel().restart() == Restart::PowerButton ? tr("Updated: press Power-cycle")
                                                                        : tr("Updated: press Replug");
    } else if (state == DriveState::Ready) {
        text = readyText(record);
    }
    return drive.isAttached() && !drive.mounted && !drive.isInBootRom()
        ? tr("%1; volumes not mounted").arg(text)
        : text;
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

DriveRow::DriveRow(std::string benchDirectory, const Drive &drive, QWidget *parent)
    : QFrame(parent), benchDirectory(std::move(benchDirectory)), serial(drive.serial)
{
    setAccessibleName(tr("%1 %2").arg(QString::fromStdString(drive.model), shownText(serial)));
    setFrameStyle(int(QFrame::StyledPanel) | int(QFrame::Plain));
    auto *const lines = new QVBoxLayout(this);
    lines->setContentsMargins(Spacing, Spacing / 2, Spacing, Spacing / 2);
    lines->setSpacing(2);
    addFacts(lines, drive.catalogueModel());
    addState(lines);
    addButtons(lines, drive.catalogueModel());
    for (TextLabel **label : {&faultLabel, &updateLabel}) {
        *label = new TextLabel(this, QPalette::PlaceholderText);
        lines->addWidget(*label);
    }

    comeBack.setSingleShot(true);
    comeBack.setTimerType(Qt::PreciseTimer);
    connect(&comeBack, &QTimer::timeout, this, &DriveRow::plug);
}

DriveRow::~DriveRow()
{
    if (comeBack.isActive()) {
        onDrive(benchDirectory, serial, "plug in", plugDrive);
    }
}

void DriveRow::addFacts(QBoxLayout *lines, const Model &model)
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

    for (int line = 0; line < static_cast<int>(VersionCaptions.size()); ++line) {
        auto *const caption = new QLabel(tr(VersionCaptions.at(line)), this);
        caption->setForegroundRole(QPalette::PlaceholderText);
        facts->addWidget(caption, line, 2);
        versionLabels.at(line) = addLabel(line, 3, QPalette::WindowText);
        caption->setBuddy(versionLabels.at(line));
    }
}

void DriveRow::addState(QBoxLayout *lines)
{
    stateLabel = new TextLabel(this);
    progress = new QProgressBar(this);
    progress->setFixedHeight(fontMetrics().height());
    progress->setAccessibleName(tr("Flash of %1").arg(shownText(serial)));
    auto *const line = new QHBoxLayout;
    line->setSpacing(Spacing);
    line->addWidget(stateLabel, 1);
    line->addWidget(progress, 1);
    lines->addLayout(line);
}

void DriveRow::addButtons(QBoxLayout *lines, const Model &model)
{
    auto *const line = new QHBoxLayout;
    line->setSpacing(6);
    lines->addLayout(line);
    plugButton = addButton(line, {});
    connect(plugButton, &QPushButton::clicked, this, &DriveRow::switchPlug);
    const bool hasPowerButton = model.restart() == Restart::PowerButton;
    connect(addButton(line, hasPowerButton ? tr("Po&wer-cycle") : tr("&Replug")), &QPushButton::clicked, this,
        &DriveRow::restart);
    QPushButton *const faultButton = addButton(line, tr("&Faults"));
    auto *const faultMenu = new FaultMenu(benchDirectory, serial, faultButton);
    faultButton->setMenu(faultMenu);
    connect(faultMenu, &FaultMenu::chosen, this, &DriveRow::pressed);
    connect(addButton(line, tr("Re&move")), &QPushButton::clicked, this,
        [this] { emit pressed(onDrive(benchDirectory, serial, "remove", removeDrive)); });
    line->addStretch();
}

QPushButton *DriveRow::addButton(QBoxLayout *line, const QString &text)
{
    auto *const button = new QPushButton(this);
    button->setAutoDefault(true); // Enter presses it
    button->setFixedWidth(QPushButton(tr("Power-cycle"), this).sizeHint().width()); // the longest text
    setText(button, text);
    line->addWidget(button);
    return button;
}

void DriveRow::setText(QPushButton *button, const QString &text)
{
    if (button->text() != text) {
        button->setText(text);
        button->setAccessibleName(QString(text).remove(QLatin1Char('&')) + ' ' + shownText(serial));
    }
}

void DriveRow::showDrive(const Drive &drive, const DeviceInfo &record)
{
    isPlugged = drive.plugged;
    if (isPlugged) {
        comeBack.stop();
    }
    // To unplug a drive that is about to come back keeps it away.
    setText(plugButton, isPlugged || comeBack.isActive() ? tr("&Unplug") : tr("&Plug"));

    serialLabel->setText(drive.reportedSerial == serial
            ? shownText(serial)
            : tr("%1, goes by %2").arg(shownText(serial), shownText(drive.reportedSerial)));
    bridgeLabel->setText(tr("%1, %2").arg(QLatin1String(drive.catalogueModel().busName()),
        drive.chipset == Chipset::NotSupported ? tr("no updater")
                                               : QString::fromLatin1(bridgeName(drive.chipset))));
    const auto versions = versionTexts(drive, record);
    for (std::size_t i = 0; i < versions.size(); ++i) {
        if (versionLabels[i]->text() != versions[i]) {
            versionLabels[i]->setText(versions[i]);
            versionLabels[i]->setAccessibleName(tr(VersionCaptions[i]) + ' ' + versions[i]);
        }
    }
    const int secondsUntilBack =
        comeBack.isActive() ? std::max(1, (comeBack.remainingTime() + 999) / 1000) : 0;
    stateLabel->setText(situationText(drive, record, secondsUntilBack));
    progress->setValue(
        static_cast<int>(100 * drive.bytesWritten / std::max<std::int64_t>(1, drive.bytesToWrite)));
    progress->setVisible(drive.state() == DriveState::Writing);
    showWhereNotEmpty(faultLabel, faultsText(drive.faults));
    const std::string lastUpdate = drive.lastUpdateText();
    showWhereNotEmpty(updateLabel,
        lastUpdate.empty() ? QString() : tr("Last update: %1").arg(QString::fromStdString(lastUpdate)));
}

void DriveRow::switchPlug()
{
    if (comeBack.isActive()) {
        comeBack.stop(); // it is unplugged, and stays so
        emit pressed({});
    } else if (isPlugged) {
        emit pressed(onDrive(benchDirectory, serial, "unplug", unplugDrive));
    } else {
        plug();
    }
}

void DriveRow::plug()
{
    emit pressed(onDrive(benchDirectory, serial, "plug in",
        [this](Store &store, const std::string &) { comeBackInTime(store); }));
}

void DriveRow::restart()
{
    emit pressed(onDrive(benchDirectory, serial, "restart", [this](Store &store, const std::string &) {
        if (isPlugged) {
            unplugDrive(store, serial);
        }
        comeBackInTime(store);
    }));
}

/// Plugs the drive in, at once when it was away for long enough.
void DriveRow::comeBackInTime(Store &store)
{
    const std::chrono::milliseconds away(now() - driveNamed(store, serial).unpluggedAt);
    const bool isClockSetBack = away.count() < 0;
    if (away < AwayTime && !isClockSetBack) {
        comeBack.start(AwayTime - away);
    } else {
        plugDrive(store, serial);
    }
}

} // namespace bench
