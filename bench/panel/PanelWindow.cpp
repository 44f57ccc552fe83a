// SPDX-License-Identifier: MIT
#include "bench/panel/PanelWindow.h"

#include "bench/core/Discovery.h"
#include "bench/core/Host.h"
#include "bench/core/LifeCycle.h"
#include "bench/panel/DriveRow.h"
#include "bench/panel/OnBench.h"
#include "bench/panel/TextLabel.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <chrono>
#include <utility>

namespace bench {

namespace {

constexpr std::chrono::milliseconds PollInterval(250);
constexpr int Margin = 8;
constexpr int Width = 480;
/// Leaves room for what is told below the buttons of some rows.
constexpr int LeastRowHeight = 110;
/// What a window manager adds to a window: on each side, and above and below it together.
constexpr int FrameWidth = 2;
constexpr int FrameHeight = 30;
/// The updater's window at its largest.
constexpr QSize UpdaterSize(850 + 2 * FrameWidth, 700 + FrameHeight);

/// Dark on white for every role and group, so that nothing is left to the colours of the desktop. What
/// explains another text has the role of placeholders, what went wrong that of bright text.
QPalette panelPalette()
{
    QPalette palette(QColor(0xF0, 0xF0, 0xF0), Qt::white);
    palette.setColor(QPalette::BrightText, QColor(0xA0, 0x10, 0x10));
    palette.setColor(QPalette::PlaceholderText, QColor(0x50, 0x50, 0x50));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(0x60, 0x60, 0x60));
    }
    return palette;
}

} // namespace

PanelWindow::PanelWindow(std::string benchDirectory, std::string imageDirectory)
    : benchDirectory(std::move(benchDirectory)), imageDirectory(std::move(imageDirectory))
{
    setWindowTitle(tr("Drive bench %1").arg(QString::fromStdString(this->benchDirectory)));
    setWindowIcon(QIcon::fromTheme(
        QStringLiteral("com.tarvo.drivebench"), QIcon(QStringLiteral(":/firmwareUpdater/TarvoLogo.png"))));
    setPalette(panelPalette());
    QToolTip::setPalette(palette());

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    addHead(column);

    auto *const content = new QWidget;
    rowColumn = new QVBoxLayout(content);
    rowColumn->setContentsMargins(0, 0, 0, 0);
    rowColumn->setSpacing(0);
    rowColumn->addStretch();
    scrollArea = new QScrollArea(this);
    scrollArea->setFrameShape(QFrame::NoFrame);
    scrollArea->setWidgetResizable(true);
    scrollArea->setFocusPolicy(Qt::NoFocus); // the buttons take it and are scrolled into view
    scrollArea->setWidget(content);
    column->addWidget(scrollArea, 1);
    message = new TextLabel(this, QPalette::BrightText);
    message->setMargin(Margin);
    message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(message);

    poll.setInterval(PollInterval);
    connect(&poll, &QTimer::timeout, this, &PanelWindow::refresh);
    poll.start();
    refresh();
}

void PanelWindow::placeBesideUpdater(const QRect &available)
{
    const QWidget *const content = scrollArea->widget();
    const int rowCount = std::max(1, static_cast<int>(rows.size()));
    const int rowWidth = content->sizeHint().width() + scrollArea->verticalScrollBar()->sizeHint().width();
    const int width = std::max(Width, rowWidth);
    const int rowHeight = std::max(content->heightForWidth(width) / rowCount, LeastRowHeight);
    const int headHeight = sizeHint().height() - scrollArea->sizeHint().height();

    QRect place = available.adjusted(0, 0, -2 * FrameWidth, -FrameHeight);
    const QSize beside = place.size() - UpdaterSize;
    if (beside.width() >= rowWidth) {
        place.setLeft(place.left() + UpdaterSize.width());
    } else {
        place.setTop(
            place.top() + std::max(0, place.height() - std::max(beside.height(), headHeight + rowHeight)));
    }
    resize(QSize(width, headHeight + rowCount * rowHeight).boundedTo(place.size()));
    move(std::max(place.left(), place.right() + 1 - this->width()), place.top());
}

void PanelWindow::addHead(QVBoxLayout *column)
{
    addButton = new QPushButton(tr("&Add drive…"), this);
    addButton->setAutoDefault(true); // Enter presses it
    auto *const catalogue = new QMenu(addButton);
    catalogue->setAttribute(Qt::WA_WindowPropagation); // legible on a dark desktop, too
    catalogue->addSection(tr("With old firmware and configuration"));
    for (const Model &model : models()) {
        connect(catalogue->addAction(tr("&%1").arg(QLatin1String(model.name))), &QAction::triggered, this,
            [this, &model] { addOutdated(model); });
    }
    addButton->setMenu(catalogue);
    companionSwitch = new QCheckBox(tr("&Companion installed"), this);
    connect(companionSwitch, &QCheckBox::clicked, this, [this](bool install) {
        actionEnded(
            onBench(benchDirectory, [install](Store &store) { setCompanionInstalled(store, install); }));
    });

    auto *const head = new QHBoxLayout;
    head->setContentsMargins(Margin, Margin, Margin, Margin);
    head->addWidget(addButton);
    head->addStretch();
    head->addWidget(companionSwitch);
    column->addLayout(head);
}

void PanelWindow::refresh()
{
    const QString refusal = onBench(benchDirectory, [this](Store &store) {
        const std::vector<Drive> drives = allDrives(store);
        companionSwitch->setChecked(isCompanionInstalled(store));
        showDrives(drives, records(drives, benchDirectory, imageDirectory));
    });
    const bool isReadable = refusal.isEmpty();
    addButton->setEnabled(isReadable);
    companionSwitch->setEnabled(isReadable);
    // The rows of a bench that cannot be read wait for it: a drive that is about to come back still does.
    scrollArea->setVisible(isReadable && !rows.empty());
    message->setText(!isReadable       ? tr("There is no bench here that can be read: %1").arg(refusal)
            : !actionRefusal.isEmpty() ? actionRefusal
            : rows.empty()             ? tr("No drive is on this bench. \"Add drive…\" puts one on it.")
                                       : QString());
    message->setVisible(!message->text().isEmpty());
}

void PanelWindow::showDrives(const std::vector<Drive> &drives, const std::vector<DeviceInfo> &records)
{
    auto former = std::move(rows);
    rows.clear();
    for (std::size_t i = 0; i < drives.size(); ++i) {
        const std::pair<std::string, std::string> key(drives[i].serial, drives[i].model);
        const auto known = former.extract(key);
        DriveRow *row = known ? known.mapped() : nullptr;
        if (row == nullptr) {
            row = new DriveRow(benchDirectory, drives[i], scrollArea->widget());
            connect(row, &DriveRow::pressed, this, &PanelWindow::actionEnded);
            rowColumn->insertWidget(rowColumn->count() - 1, row);
        }
        row->showDrive(drives[i], records[i]);
        rows.emplace(key, row);
    }
    for (const auto &[key, row] : former) {
        row->hide();
        row->deleteLater();
    }
}

void PanelWindow::addOutdated(const Model &model)
{
    actionEnded(onBench(benchDirectory, [&model](Store &store) {
        Drive drive = newDrive(model);
        drive.flashFirmware = "1.00";
        drive.flashConfiguration = "1";
        store.change([&] {
            drive.serial = freeSerial(store.drives(), drive.model);
            addDrive(store, drive);
        });
    }));
}

void PanelWindow::actionEnded(const QString &refusal)
{
    actionRefusal = refusal;
    refresh();
}

} // namespace bench
