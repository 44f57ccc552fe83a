#include "bench/panel/PanelWindow.h"

#include "bench/core/Companion.h"
#include "bench/core/Discovery.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/Host.h"
#include "bench/core/ShellQuoting.h"
#include "bench/panel/DriveRow.h"
#include "bench/panel/ElidedLabel.h"
#include "bench/panel/OnBench.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QScreen>
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
constexpr int LeastHeight = 240;
/// The updater's window at its widest.
constexpr int UpdaterWidth = 850;
/// What a window manager adds to a window: on each side, and above and below it together.
constexpr int FrameWidth = 2;
constexpr int FrameHeight = 30;

/// The height of the updater's window, which shows three drives in a row.
int updaterHeight(std::size_t drives)
{
    return std::min(700, (static_cast<int>(drives) + 2) / 3 * 200 + 120);
}

/// Dark on white for every role and group, so that nothing is left to the colours of the desktop. What
/// explains another text has the role of placeholders, what went wrong that of bright text.
QPalette panelPalette()
{
    const QColor text(0x20, 0x20, 0x20);
    const QColor button(0xF0, 0xF0, 0xF0);
    const QColor problem(0xA0, 0x10, 0x10);
    QPalette palette(text, button, Qt::white, QColor(0xA0, 0xA0, 0xA0), QColor(0xC0, 0xC0, 0xC0), text,
        problem, Qt::white, Qt::white);
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
    setWindowTitle(tr("Drive bench"));
    setWindowIcon(QIcon::fromTheme(
        QStringLiteral("com.tarvo.drivebench"), QIcon(QStringLiteral(":/firmwareUpdater/TarvoLogo.png"))));
    setPalette(panelPalette());
    QToolTip::setPalette(palette());

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    addHead(column);
    addDrives(column);

    messageLine = new ElidedLabel(this, QPalette::BrightText);
    messageLine->setContentsMargins(Margin, 6, Margin, 6);
    column->addWidget(messageLine);

    poll.setInterval(PollInterval);
    connect(&poll, &QTimer::timeout, this, &PanelWindow::refresh);
    poll.start();
    refresh();

    // Tall enough for all drives, where the screen is.
    const int others = sizeHint().height() - scrollArea->sizeHint().height();
    const int height = std::max(scrollArea->widget()->sizeHint().height(), LeastHeight) + others;
    resize(QSize(Width, height).boundedTo(screen()->availableSize() - QSize(2 * FrameWidth, FrameHeight)));
}

void PanelWindow::placeBesideUpdater(const QRect &available)
{
    const QSize least = minimumSizeHint();
    const QRect within = available.adjusted(0, 0, -2 * FrameWidth, -FrameHeight);
    QRect place = within.adjusted(UpdaterWidth + 2 * FrameWidth, 0, 0, 0);
    if (place.width() < least.width()) {
        place = within.adjusted(0, updaterHeight(rows.size()) + 2 * FrameHeight, 0, 0);
        place.setTop(std::min(place.top(), within.bottom() + 1 - least.height()));
    }
    move(place.topLeft());
    resize(size().boundedTo(place.size()));
}

void PanelWindow::addHead(QVBoxLayout *column)
{
    auto *const directory = new ElidedLabel(this);
    directory->setText(QString::fromStdString(benchDirectory));
    companionSwitch = new QCheckBox(tr("Companion installed"), this);
    connect(companionSwitch, &QCheckBox::clicked, this, &PanelWindow::switchCompanion);

    auto *const head = new QHBoxLayout;
    head->setContentsMargins(Margin, 8, Margin, 8);
    head->setSpacing(Margin);
    head->addWidget(directory, 1);
    head->addWidget(companionSwitch);
    column->addLayout(head);
}

void PanelWindow::addDrives(QVBoxLayout *column)
{
    auto *const content = new QWidget;
    rowColumn = new QVBoxLayout(content);
    rowColumn->setContentsMargins(0, 0, 0, 0);
    rowColumn->setSpacing(0);
    rowColumn->addStretch();

    emptyLabel = new QLabel(this);
    emptyLabel->setTextFormat(Qt::PlainText);
    emptyLabel->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    emptyLabel->setAlignment(Qt::AlignCenter);
    emptyLabel->setWordWrap(true);
    emptyLabel->setMargin(2 * Margin);
    column->addWidget(emptyLabel, 1);

    scrollArea = new QScrollArea(this);
    scrollArea->setFrameShape(QFrame::NoFrame);
    scrollArea->setWidgetResizable(true);
    scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea->setWidget(content);
    column->addWidget(scrollArea, 1);
}

void PanelWindow::refresh()
{
    const QString refusal = onBench(benchDirectory, [this](BenchStore &store) {
        const std::vector<Drive> drives = DriveLifeCycle(store).drives();
        companionSwitch->setChecked(Host(store).state().companionInstalled);
        showDrives(drives, Discovery(store, imageDirectory).records(drives));
    });
    const bool isReadable = refusal.isEmpty();
    const QString option = QString::fromStdString("--bench " + shellQuoted(benchDirectory));
    emptyLabel->setText(isReadable
            ? tr(
                "No drive is on this bench. Put one on it with:\n\ndrive-bench add Pebble --firmware 2.07 %1")
                  .arg(option)
            : tr("There is no bench here that can be read:\n\n%1").arg(withoutDirectory(refusal)));
    companionSwitch->setEnabled(isReadable);
    // The rows of a bench that cannot be read wait for it: a drive that is about to come back still does.
    emptyLabel->setVisible(!isReadable || rows.empty());
    scrollArea->setVisible(isReadable && !rows.empty());
    messageLine->setText(withoutDirectory(actionRefusal));
    messageLine->setVisible(!actionRefusal.isEmpty());
}

void PanelWindow::showDrives(const std::vector<Drive> &drives, const std::vector<DeviceInfo> &records)
{
    auto former = std::move(rows);
    rows.clear();
    for (std::size_t i = 0; i < drives.size(); ++i) {
        const std::pair<std::string, std::string> key(drives[i].serial, drives[i].model);
        const auto known = former.extract(key);
        DriveRow *const row = known ? known.mapped() : addRow(drives[i]);
        row->showDrive(drives[i], records[i]);
        rows.emplace(key, row);
    }
    for (const auto &[key, row] : former) {
        // An open menu must not lose the row under it: the row goes when the menu is closed.
        if (row->hasOpenMenu()) {
            row->showGone();
            rows.emplace(key, row);
        } else {
            row->hide();
            row->deleteLater();
        }
    }
}

/// A row for the drive below the others.
DriveRow *PanelWindow::addRow(const Drive &drive)
{
    auto *const row = new DriveRow(benchDirectory, drive, scrollArea->widget());
    connect(row, &DriveRow::pressed, this, &PanelWindow::actionEnded);
    rowColumn->insertWidget(rowColumn->count() - 1, row);
    // However small the window is made, no button is out of reach.
    scrollArea->setMinimumWidth(
        row->minimumSizeHint().width() + scrollArea->verticalScrollBar()->sizeHint().width());
    return row;
}

/// The head of the window names the directory; in a message it only takes the place of what matters.
QString PanelWindow::withoutDirectory(QString message) const
{
    return message.remove(QString::fromStdString(benchDirectory) + QLatin1Char('/'));
}

void PanelWindow::switchCompanion(bool install)
{
    actionEnded(onBench(benchDirectory, [this, install](BenchStore &store) {
        Companion companion(store, benchDirectory);
        install ? companion.install() : companion.uninstall();
    }));
}

void PanelWindow::actionEnded(const QString &refusal)
{
    actionRefusal = refusal;
    refresh();
}

} // namespace bench
