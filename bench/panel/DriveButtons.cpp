#include "bench/panel/DriveButtons.h"

#include "bench/core/Text.h"
#include "bench/panel/FaultMenu.h"
#include "bench/panel/OnBench.h"

#include <QBoxLayout>
#include <QPushButton>

#include <algorithm>
#include <chrono>
#include <utility>

namespace bench {

namespace {

/// The program asks every two seconds which drives there are; one that is away for so long is missed.
constexpr std::chrono::milliseconds AwayTime(3000);

} // namespace

DriveButtons::DriveButtons(std::string benchDirectory, const Drive &drive, QWidget *parent)
    : QWidget(parent), benchDirectory(std::move(benchDirectory)), serial(drive.serial)
{
    auto *const line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(6);
    unplugButton = addButton(line, tr("Unplug"), tr("Unplug %1"));
    connect(unplugButton, &QPushButton::clicked, this, &DriveButtons::unplug);
    plugButton = addButton(line, tr("Plug"), tr("Plug %1"));
    connect(plugButton, &QPushButton::clicked, this, &DriveButtons::plug);
    const bool hasPowerButton = drive.catalogueModel().restart() == Restart::PowerButton;
    restartButton = addButton(line, hasPowerButton ? tr("Power-cycle") : tr("Replug"),
        hasPowerButton ? tr("Power-cycle %1") : tr("Replug %1"));
    connect(restartButton, &QPushButton::clicked, this, &DriveButtons::restart);
    faultButton = addButton(line, tr("Faults"), tr("Faults of %1"));
    addFaultMenu();
    line->addStretch();

    comeBack.setSingleShot(true);
    comeBack.setTimerType(Qt::PreciseTimer);
    connect(&comeBack, &QTimer::timeout, this, &DriveButtons::plug);
}

DriveButtons::~DriveButtons()
{
    if (comeBack.isActive()) {
        onBench(benchDirectory, [this](BenchStore &store) { DriveLifeCycle(store).plug(serial); });
    }
}

QPushButton *DriveButtons::addButton(QBoxLayout *line, const QString &text, const QString &accessibleName)
{
    auto *const button = new QPushButton(text, this);
    button->setAccessibleName(accessibleName.arg(QString::fromStdString(escaped(serial))));
    button->setFixedWidth(QPushButton(tr("Power-cycle"), this).sizeHint().width()); // the longest text
    line->addWidget(button);
    return button;
}

void DriveButtons::addFaultMenu()
{
    faultMenu = new FaultMenu(faultButton);
    faultButton->setMenu(faultMenu);
    connect(faultMenu, &FaultMenu::faultChosen, this,
        [this](const Fault &fault) { act([&](DriveLifeCycle &drives) { drives.setFault(serial, fault); }); });
    connect(faultMenu, &FaultMenu::faultDropped, this,
        [this](FaultKind kind) { act([&](DriveLifeCycle &drives) { drives.clearFault(serial, kind); }); });
    connect(faultMenu, &FaultMenu::allDropped, this,
        [this] { act([this](DriveLifeCycle &drives) { drives.clearFaults(serial); }); });
}

bool DriveButtons::hasOpenMenu() const
{
    return faultMenu->isVisible();
}

int DriveButtons::secondsUntilBack() const
{
    return comeBack.isActive() ? std::max(1, (comeBack.remainingTime() + 999) / 1000) : 0;
}

void DriveButtons::showDrive(const Drive &drive)
{
    if (drive.plugged) {
        comeBack.stop();
    }
    // To unplug a drive that is about to come back keeps it away.
    const bool canUnplug = drive.plugged || comeBack.isActive();
    QPushButton *const possible = canUnplug ? unplugButton : plugButton;
    QPushButton *const impossible = canUnplug ? plugButton : unplugButton;
    setEnabled(true);
    possible->setEnabled(true);
    // A disabled button loses the focus: the one that undoes it takes it, for who works with the keyboard.
    if (impossible->hasFocus() || (!drive.plugged && restartButton->hasFocus())) {
        possible->setFocus();
    }
    impossible->setEnabled(false);
    restartButton->setEnabled(drive.plugged);
    faultMenu->showFaults(drive.faults);
}

void DriveButtons::act(const std::function<void(DriveLifeCycle &drives)> &action)
{
    emit pressed(onBench(benchDirectory, [&action](BenchStore &store) {
        DriveLifeCycle drives(store);
        action(drives);
    }));
}

void DriveButtons::plug()
{
    act([this](DriveLifeCycle &drives) {
        const std::chrono::milliseconds away(now() - drives.drive(serial).unpluggedAt);
        const bool isClockSetBack = away.count() < 0;
        if (away < AwayTime && !isClockSetBack) {
            comeBack.start(AwayTime - away);
        } else {
            drives.plug(serial);
        }
    });
}

void DriveButtons::unplug()
{
    act([this](DriveLifeCycle &drives) {
        if (comeBack.isActive()) {
            comeBack.stop(); // it is unplugged, and stays so
        } else {
            drives.unplug(serial);
        }
    });
}

void DriveButtons::restart()
{
    act([this](DriveLifeCycle &drives) {
        drives.unplug(serial);
        comeBack.start(AwayTime);
    });
}

} // namespace bench
