#include "bench/panel/DriveButtons.h"

#include "bench/core/LifeCycle.h"
#include "bench/panel/FaultMenu.h"
#include "bench/panel/OnBench.h"

#include <QHBoxLayout>
#include <QPushButton>

#include <algorithm>
#include <chrono>
#include <utility>

namespace bench {

namespace {

constexpr std::chrono::milliseconds AwayTime = std::chrono::seconds(AwaySeconds);

} // namespace

DriveButtons::DriveButtons(std::string benchDirectory, const Drive &drive, QWidget *parent)
    : QWidget(parent), benchDirectory(std::move(benchDirectory)), serial(drive.serial)
{
    auto *const line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(6);
    plugButton = addButton({});
    connect(plugButton, &QPushButton::clicked, this, &DriveButtons::switchPlug);
    const bool hasPowerButton = drive.catalogueModel().restart() == Restart::PowerButton;
    connect(addButton(hasPowerButton ? tr("Po&wer-cycle") : tr("&Replug")), &QPushButton::clicked, this,
        &DriveButtons::restart);
    QPushButton *const faultButton = addButton(tr("&Faults"));
    faultMenu = new FaultMenu(this->benchDirectory, serial, faultButton);
    faultButton->setMenu(faultMenu);
    connect(faultMenu, &FaultMenu::chosen, this, &DriveButtons::pressed);
    connect(addButton(tr("Re&move")), &QPushButton::clicked, this, [this] { act("remove", removeDrive); });
    line->addStretch();

    comeBack.setSingleShot(true);
    comeBack.setTimerType(Qt::PreciseTimer);
    connect(&comeBack, &QTimer::timeout, this, &DriveButtons::plug);
    showDrive(drive);
}

DriveButtons::~DriveButtons()
{
    if (comeBack.isActive()) {
        onDrive(benchDirectory, serial, "plug in", plugDrive);
    }
}

QPushButton *DriveButtons::addButton(const QString &text)
{
    auto *const button = new QPushButton(this);
    button->setAutoDefault(true); // Enter presses it
    button->setFixedWidth(QPushButton(tr("Power-cycle"), this).sizeHint().width()); // the longest text
    setText(button, text);
    layout()->addWidget(button);
    return button;
}

void DriveButtons::setText(QPushButton *button, const QString &text)
{
    if (button->text() != text) {
        button->setText(text);
        button->setAccessibleName(QString(text).remove(QLatin1Char('&')) + ' ' + shownText(serial));
    }
}

int DriveButtons::secondsUntilBack() const
{
    return comeBack.isActive() ? std::max(1, (comeBack.remainingTime() + 999) / 1000) : 0;
}

void DriveButtons::showDrive(const Drive &drive)
{
    isPlugged = drive.plugged;
    if (isPlugged) {
        comeBack.stop();
    }
    // To unplug a drive that is about to come back keeps it away.
    setText(plugButton, isPlugged || comeBack.isActive() ? tr("&Unplug") : tr("&Plug"));
    faultMenu->setFaults(drive.faults);
}

void DriveButtons::act(
    const std::string &action, const std::function<void(Store &store, const std::string &serial)> &work)
{
    emit pressed(onDrive(benchDirectory, serial, action, work));
}

void DriveButtons::switchPlug()
{
    if (comeBack.isActive()) {
        comeBack.stop(); // it is unplugged, and stays so
        emit pressed({});
    } else if (isPlugged) {
        act("unplug", unplugDrive);
    } else {
        plug();
    }
}

void DriveButtons::plug()
{
    act("plug in", [this](Store &store, const std::string &) { comeBackInTime(store); });
}

void DriveButtons::restart()
{
    act("restart", [this](Store &store, const std::string &) {
        if (isPlugged) {
            unplugDrive(store, serial);
        }
        comeBackInTime(store);
    });
}

/// Plugs the drive in, at once when it was away for long enough.
void DriveButtons::comeBackInTime(Store &store)
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
