#include "bench/panel/DriveRow.h"

#include "bench/core/Text.h"
#include "bench/panel/ElidedLabel.h"
#include "bench/panel/FaultMenu.h"

#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>

#include <algorithm>
#include <chrono>

namespace bench {

namespace {

constexpr std::chrono::milliseconds PowerCyclePause(3000);
constexpr int PictureSize = 48;
const QColor SecondaryColour(0x60, 0x60, 0x60);
const QColor LineColour(0xDD, 0xDD, 0xDD);

enum Column { PictureColumn, NameColumn, CaptionColumn, VersionColumn, StatusColumn, ButtonColumn };

constexpr std::int32_t UpdateRequired = 1;
constexpr std::int32_t UpToDate = 2;

void setTextColour(QWidget *widget, const QColor &colour)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, colour);
    widget->setPalette(palette);
}

QString versions(const QString &firmware, const QString &configuration)
{
    return firmware.isEmpty() ? DriveRow::tr("none")
                              : DriveRow::tr("%1, conf. %2").arg(escaped(firmware), escaped(configuration));
}

QString progressText(const Drive &drive)
{
    const std::int64_t left = std::max<std::int64_t>(0, drive.bytesToWrite - drive.bytesWritten);
    const QLocale locale;
    return DriveRow::tr("%1 of %2 bytes, %3 s left")
        .arg(locale.toString(qlonglong(drive.bytesWritten)), locale.toString(qlonglong(drive.bytesToWrite)),
            locale.toString(qlonglong((left + drive.flashRate - 1) / drive.flashRate)));
}

/// What the status of a drive that works means for a person.
QString readyText(const DriveRecord &record)
{
    const bool firmware = record.firmwareStatus == UpdateRequired;
    const bool configuration = record.configurationStatus == UpdateRequired;
    if (record.firmwareStatus == 0 || record.configurationStatus == 0) {
        return DriveRow::tr("Status not known yet");
    }
    if (record.chipsetType == 0) {
        return DriveRow::tr("No updater for its bridge");
    }
    if (firmware && configuration) {
        return DriveRow::tr("Needs firmware and configuration");
    }
    if (firmware) {
        return DriveRow::tr("Needs firmware");
    }
    if (configuration) {
        return DriveRow::tr("Needs configuration");
    }
    if (record.firmwareStatus == UpToDate && record.configurationStatus == UpToDate) {
        return DriveRow::tr("Up to date");
    }
    return DriveRow::tr("Status unknown");
}

QString restartText(Restart restart)
{
    return restart == Restart::PowerButton ? DriveRow::tr("Updated: press power-cycle")
                                           : DriveRow::tr("Updated: unplug it and plug it in");
}

} // namespace

DriveRow::DriveRow(Bench *bench, const Drive &drive, QWidget *parent)
    : QFrame(parent), bench(bench), serialNumber(drive.serial)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto *const grid = new QGridLayout(this);
    grid->setContentsMargins(16, 12, 16, 0);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(0);

    addTexts(drive);
    addButtons();

    auto *const line = new QFrame(this);
    line->setFrameStyle(int(QFrame::HLine) | int(QFrame::Plain));
    setTextColour(line, LineColour);
    grid->setRowMinimumHeight(3, 12);
    grid->addWidget(line, 4, 0, 1, -1);

    powerOff.setSingleShot(true);
    powerOff.setTimerType(Qt::PreciseTimer);
    powerOff.setInterval(PowerCyclePause);
    connect(&powerOff, &QTimer::timeout, this, [this] {
        QString problem;
        tell(this->bench->plug(serialNumber, &problem), problem);
    });
}

DriveRow::~DriveRow()
{
    if (powerOff.isActive()) {
        QString ignored;
        bench->plug(serialNumber, &ignored);
    }
}

void DriveRow::addTexts(const Drive &drive)
{
    auto *const grid = static_cast<QGridLayout *>(layout());
    const auto addLabel = [this, grid](int line, int column) {
        auto *const label = new ElidedLabel(this);
        grid->addWidget(label, line, column);
        return label;
    };

    auto *const picture = new QLabel(this);
    picture->setFixedSize(PictureSize, PictureSize);
    picture->setPixmap(QIcon(drive.catalogueModel().picture()).pixmap(PictureSize, PictureSize));
    grid->addWidget(picture, 0, PictureColumn, 3, 1);

    ElidedLabel *const name = addLabel(0, NameColumn);
    QFont bold = font();
    bold.setBold(true);
    name->setFont(bold);
    name->setText(drive.model);
    serialLabel = addLabel(1, NameColumn);
    bridgeLabel = addLabel(2, NameColumn);
    setTextColour(bridgeLabel, SecondaryColour);

    const QStringList captions{tr("Running"), tr("In flash"), tr("On offer")};
    for (int line = 0; line < captions.size(); ++line) {
        auto *const caption = new QLabel(captions.at(line), this);
        setTextColour(caption, SecondaryColour);
        grid->addWidget(caption, line, CaptionColumn);
    }
    runningLabel = addLabel(0, VersionColumn);
    flashLabel = addLabel(1, VersionColumn);
    offerLabel = addLabel(2, VersionColumn);

    pluggedLabel = addLabel(0, StatusColumn);
    statusLabel = addLabel(1, StatusColumn);
    lastLine = new QStackedWidget(this);
    faultLabel = new ElidedLabel(lastLine);
    setTextColour(faultLabel, SecondaryColour);
    progress = new QProgressBar(lastLine);
    progress->setTextVisible(false);
    progress->setAccessibleName(tr("Flash of %1").arg(escaped(serialNumber)));
    lastLine->addWidget(faultLabel);
    lastLine->addWidget(progress);
    lastLine->setFixedHeight(fontMetrics().height());
    grid->addWidget(lastLine, 2, StatusColumn);

    // Widths that depend on no drive, so that the columns of all rows are aligned.
    name->ensurePolished();
    int nameWidth = 0;
    for (const Model &model : models()) {
        nameWidth = std::max(nameWidth, name->fontMetrics().horizontalAdvance(model.name));
    }
    const int letter = fontMetrics().averageCharWidth();
    grid->setColumnMinimumWidth(NameColumn, nameWidth + letter);
    grid->setColumnMinimumWidth(VersionColumn, 15 * letter);
    grid->setColumnMinimumWidth(StatusColumn, 36 * letter);
    grid->setColumnStretch(NameColumn, 1);
    grid->setColumnStretch(StatusColumn, 1);
    for (int line = 0; line < captions.size(); ++line) {
        grid->setRowMinimumHeight(line, fontMetrics().height() + 2);
    }
}

void DriveRow::addButtons()
{
    auto *const buttons = new QGridLayout;
    buttons->setSpacing(6);
    static_cast<QGridLayout *>(layout())->addLayout(buttons, 0, ButtonColumn, 3, 1, Qt::AlignVCenter);
    const auto addButton = [this, buttons](const QString &text, const QString &name, int line, int column) {
        auto *const button = new QPushButton(text, this);
        button->setAccessibleName(name.arg(escaped(serialNumber)));
        buttons->addWidget(button, line, column);
        return button;
    };

    unplugButton = addButton(tr("Unplug"), tr("Unplug %1"), 0, 0);
    connect(unplugButton, &QPushButton::clicked, this, [this] {
        QString problem;
        tell(bench->unplug(serialNumber, &problem), problem);
    });
    plugButton = addButton(tr("Plug"), tr("Plug %1"), 0, 1);
    connect(plugButton, &QPushButton::clicked, this, [this] {
        powerOff.stop();
        QString problem;
        tell(bench->plug(serialNumber, &problem), problem);
    });
    powerCycleButton = addButton(tr("Power-cycle"), tr("Power-cycle %1"), 1, 0);
    connect(powerCycleButton, &QPushButton::clicked, this, &DriveRow::powerCycle);

    faultButton = addButton(tr("Faults"), tr("Faults of %1"), 1, 1);
    faultMenu = new FaultMenu(faultButton);
    faultButton->setMenu(faultMenu);
    connect(faultMenu, &FaultMenu::faultChosen, this, [this](const Fault &fault) {
        QString problem;
        tell(bench->setFault(serialNumber, fault, &problem), problem);
    });
    connect(faultMenu, &FaultMenu::faultDropped, this, [this](const QString &name) {
        QString problem;
        tell(bench->clearFault(serialNumber, name, &problem), problem);
    });
    connect(faultMenu, &FaultMenu::allDropped, this, [this] {
        QString problem;
        tell(bench->clearFault(serialNumber, QString(), &problem), problem);
    });

    for (QPushButton *button : {unplugButton, plugButton, powerCycleButton, faultButton}) {
        button->setFixedWidth(powerCycleButton->sizeHint().width());
    }
}

void DriveRow::tell(bool done, const QString &problem)
{
    emit pressed(done ? QString() : problem);
}

void DriveRow::powerCycle()
{
    QString problem;
    const bool done = bench->unplug(serialNumber, &problem);
    if (done) {
        powerOff.start();
    }
    tell(done, problem);
}

bool DriveRow::hasOpenMenu() const
{
    return faultMenu->isVisible();
}

void DriveRow::showDrive(const Drive &drive)
{
    if (drive.plugged) {
        powerOff.stop();
    }
    const DriveRecord record = bench->record(drive);
    const DriveState state = bench->state(drive);
    serialLabel->setText(drive.reportedSerial == drive.serial
            ? escaped(drive.serial)
            : tr("%1, goes by %2").arg(escaped(drive.serial), escaped(drive.reportedSerial)));
    bridgeLabel->setText(tr("%1, %2").arg(drive.catalogueModel().isFireWire() ? tr("FireWire") : tr("USB"),
        drive.chipset == 0 ? tr("no updater") : bridgeName(drive.chipset)));
    runningLabel->setText(
        drive.plugged ? versions(drive.runningFirmware, drive.runningConfiguration) : tr("–"));
    flashLabel->setText(state == DriveState::Writing ? tr("being written")
            : drive.torn                             ? tr("torn")
                         : versions(drive.flashFirmware, drive.flashConfiguration));
    offerLabel->setText(escaped(record.newFirmwareVersion));
    showStatus(drive, record, state);
    showFaults(drive.faults);
    showPlugged(drive.plugged);
    faultButton->setEnabled(true);
}

void DriveRow::showUnreadable()
{
    pluggedLabel->clear();
    statusLabel->setText(tr("Its file cannot be read"));
    for (QPushButton *button : {unplugButton, plugButton, powerCycleButton, faultButton}) {
        button->setEnabled(false);
    }
}

void DriveRow::showStatus(const Drive &drive, const DriveRecord &record, DriveState state)
{
    pluggedLabel->setText(!drive.plugged ? tr("Unplugged")
            : drive.mounted              ? tr("Plugged in, volumes mounted")
                                         : tr("Plugged in, volumes not mounted"));
    switch (state) {
    case DriveState::Unplugged:
        statusLabel->setText(powerOff.isActive() ? tr("Comes back by itself") : QString());
        break;
    case DriveState::Silent:
        statusLabel->setText(tr("Does not answer"));
        break;
    case DriveState::Writing:
        statusLabel->setText(progressText(drive));
        break;
    case DriveState::BootRom:
        statusLabel->setText(tr("Boot ROM: update it again"));
        break;
    case DriveState::RestartNeeded:
        statusLabel->setText(restartText(drive.catalogueModel().restart));
        break;
    case DriveState::Ready:
        statusLabel->setText(readyText(record));
        break;
    }
    progress->setMaximum(static_cast<int>(std::max<std::int64_t>(1, drive.bytesToWrite)));
    progress->setValue(static_cast<int>(drive.bytesWritten));
    lastLine->setCurrentWidget(state == DriveState::Writing ? static_cast<QWidget *>(progress) : faultLabel);
}

void DriveRow::showPlugged(bool plugged)
{
    QPushButton *const possible = plugged ? unplugButton : plugButton;
    QPushButton *const impossible = plugged ? plugButton : unplugButton;
    possible->setEnabled(true);
    // A disabled button loses the focus: the one that undoes it takes it, for who works with the keyboard.
    if (impossible->hasFocus() || (!plugged && powerCycleButton->hasFocus())) {
        possible->setFocus();
    }
    impossible->setEnabled(false);
    powerCycleButton->setEnabled(plugged);
}

void DriveRow::showFaults(const QVector<Fault> &faults)
{
    QStringList titles;
    for (const Fault &fault : faults) {
        titles.append(fault.once ? tr("%1, once").arg(FaultMenu::title(fault)) : FaultMenu::title(fault));
    }
    faultLabel->setText(
        titles.isEmpty() ? QString() : tr("Fault: %1").arg(titles.join(QStringLiteral("; "))));
    faultMenu->showFaults(faults);
}

} // namespace bench
