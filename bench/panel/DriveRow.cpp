#include "bench/panel/DriveRow.h"

#include "bench/panel/DriveButtons.h"
#include "bench/panel/DriveTexts.h"
#include "bench/panel/ElidedLabel.h"
#include "bench/panel/PanelPalette.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QProgressBar>
#include <QStackedWidget>

#include <algorithm>

namespace bench {

namespace {

constexpr int PictureSize = 48;
constexpr int Spacing = 8;

void setTextColor(QWidget *widget, const QColor &color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

QGridLayout *addGrid(QWidget *widget)
{
    auto *const grid = new QGridLayout(widget);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(Spacing);
    grid->setVerticalSpacing(0);
    for (int line = 0; line < 3; ++line) {
        grid->setRowMinimumHeight(line, widget->fontMetrics().height() + 2);
    }
    return grid;
}

ElidedLabel *addLabel(QGridLayout *grid, int line, int column)
{
    auto *const label = new ElidedLabel(grid->parentWidget());
    grid->addWidget(label, line, column);
    return label;
}

} // namespace

DriveRow::DriveRow(const std::string &benchDirectory, const Drive &drive, QWidget *parent)
    : QFrame(parent), serial(drive.serial), model(drive.model)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    parts = new QBoxLayout(QBoxLayout::LeftToRight);
    parts->setContentsMargins(Spacing, Spacing, Spacing, Spacing);
    parts->addWidget(addFacts(drive.catalogueModel()), 0, Qt::AlignTop);
    buttons = new DriveButtons(benchDirectory, drive, this);
    connect(buttons, &DriveButtons::pressed, this, &DriveRow::pressed);
    parts->addWidget(buttons, 0, Qt::AlignLeft | Qt::AlignVCenter);
    parts->addWidget(addState(), 1, Qt::AlignTop);

    auto *const line = new QFrame(this);
    line->setFrameStyle(int(QFrame::HLine) | int(QFrame::Plain));
    setTextColor(line, LineColor);
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(parts);
    column->addWidget(line);

    arrange(false);
    narrowWidth = parts->minimumSize().width();
    arrange(true);
    wideWidth = parts->minimumSize().width();
}

QWidget *DriveRow::addFacts(const Model &product)
{
    auto *const area = new QWidget(this);
    facts = addGrid(area);
    auto *const picture = new QLabel(area);
    picture->setFixedSize(PictureSize, PictureSize);
    picture->setPixmap(QIcon(QString::fromStdString(product.picture())).pixmap(PictureSize, PictureSize));
    facts->addWidget(picture, 0, 0, 3, 1);

    ElidedLabel *const name = addLabel(facts, 0, 1);
    QFont bold = font();
    bold.setBold(true);
    name->setFont(bold);
    name->setText(QString::fromLatin1(product.name));
    serialLabel = addLabel(facts, 1, 1);
    bridgeLabel = addLabel(facts, 2, 1);
    setTextColor(bridgeLabel, SecondaryTextColor);

    const QStringList captions{tr("Running"), tr("In flash"), tr("On offer")};
    for (int line = 0; line < captions.size(); ++line) {
        auto *const caption = new QLabel(captions.at(line), area);
        setTextColor(caption, SecondaryTextColor);
        facts->addWidget(caption, line, 2);
    }
    runningLabel = addLabel(facts, 0, 3);
    flashLabel = addLabel(facts, 1, 3);
    offerLabel = addLabel(facts, 2, 3);

    // Widths that depend on no drive, so that the columns of all rows are aligned.
    for (const Model &other : models()) {
        const QString text = QString::fromLatin1(other.name);
        nameWidth = std::max(nameWidth, QFontMetrics(bold).horizontalAdvance(text));
    }
    facts->setColumnMinimumWidth(3, fontMetrics().horizontalAdvance(QStringLiteral("0.00, conf. 00 ")));
    facts->setColumnStretch(1, 1);
    return area;
}

QWidget *DriveRow::addState()
{
    auto *const lines = new QWidget(this);
    QGridLayout *const table = addGrid(lines);
    pluggedLabel = addLabel(table, 0, 0);
    statusLabel = addLabel(table, 1, 0);
    updateLabel = addLabel(table, 2, 0);
    setTextColor(updateLabel, SecondaryTextColor);

    lastLine = new QStackedWidget(lines);
    lastLine->setFixedHeight(fontMetrics().height());
    faultLabel = new ElidedLabel(lastLine);
    setTextColor(faultLabel, SecondaryTextColor);
    lastLine->addWidget(faultLabel);
    progress = new QProgressBar(lastLine);
    progress->setTextVisible(false);
    progress->setAccessibleName(tr("Flash of %1").arg(shown(serial)));
    lastLine->addWidget(progress);
    table->addWidget(lastLine, 3, 0);
    table->setColumnMinimumWidth(0, 36 * fontMetrics().averageCharWidth());
    return lines;
}

/// The three parts side by side, or one below the other.
void DriveRow::arrange(bool isWide)
{
    parts->setDirection(isWide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    parts->setSpacing(isWide ? 2 * Spacing : Spacing);
    facts->setColumnMinimumWidth(1, isWide ? nameWidth : nameWidth / 2);
    buttons->arrange(isWide);
}

void DriveRow::resizeEvent(QResizeEvent *event)
{
    arrange(width() >= wideWidth);
    QFrame::resizeEvent(event);
}

QSize DriveRow::minimumSizeHint() const
{
    return {narrowWidth, QFrame::minimumSizeHint().height()};
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
    statusLabel->setText(secondsUntilBack > 0 ? tr("Comes back by itself in %1 s").arg(secondsUntilBack)
                                              : stateText(drive, record));
    const std::string lastUpdate = drive.lastUpdateText();
    updateLabel->setText(
        lastUpdate.empty() ? QString() : tr("Last update: %1").arg(QString::fromStdString(lastUpdate)));
    faultLabel->setText(faultsText(drive.faults));
    progress->setMaximum(static_cast<int>(std::max<std::int64_t>(1, drive.bytesToWrite)));
    progress->setValue(static_cast<int>(drive.bytesWritten));
    lastLine->setCurrentWidget(isWritten ? static_cast<QWidget *>(progress) : faultLabel);
}

void DriveRow::showGone()
{
    pluggedLabel->clear();
    statusLabel->setText(tr("No longer on the bench"));
    buttons->setEnabled(false);
}

} // namespace bench
