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
#include <QInputDialog>
#include <QLabel>
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
constexpr int LeastHeight = 240;
/// The updater's window at its largest.
constexpr QSize UpdaterSize(850, 700);
/// What a window manager adds to a window: on each side, and above and below it together.
constexpr int FrameWidth = 2;
constexpr int FrameHeight = 30;

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
    setWindowTitle(tr("Drive bench %1").arg(QString::fromStdString(this->benchDirectory)));
    setWindowIcon(QIcon::fromTheme(
        QStringLiteral("com.tarvo.drivebench"), QIcon(QStringLiteral(":/firmwareUpdater/TarvoLogo.png"))));
    setPalette(panelPalette());
    QToolTip::setPalette(palette());

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    addHead(column);
    addDrives(column);

    messageLine = new TextLabel(this, QPalette::BrightText);
    messageLine->setMargin(Margin);
    column->addWidget(messageLine);

    poll.setInterval(PollInterval);
    connect(&poll, &QTimer::timeout, this, &PanelWindow::refresh);
    poll.start();
    refresh();
}

void PanelWindow::placeBesideUpdater(const QRect &available)
{
    const QSize content = scrollArea->widget()->sizeHint();
    const int head = sizeHint().height() - scrollArea->sizeHint().height();
    const int rowHeight = content.height() / std::max(1, static_cast<int>(rows.size()));
    const int leastWidth = content.width() + scrollArea->verticalScrollBar()->sizeHint().width();

    QRect place = available.adjusted(0, 0, -2 * FrameWidth, -FrameHeight);
    const QPoint free =
        place.topLeft() + QPoint(UpdaterSize.width() + 2 * FrameWidth, UpdaterSize.height() + FrameHeight);
    if (place.right() + 1 - free.x() >= leastWidth) {
        place.setLeft(free.x());
    } else {
        place.setTop(std::max(place.top(), std::min(free.y(), place.bottom() + 1 - head - rowHeight)));
    }
    resize(QSize(std::max(Width, leastWidth), std::max(content.height(), LeastHeight) + head)
               .boundedTo(place.size()));
    move(std::max(place.left(), place.right() + 1 - width()), place.top());
}

void PanelWindow::addHead(QVBoxLayout *column)
{
    addButton = new QPushButton(tr("&Add drive…"), this);
    addButton->setAutoDefault(true); // Enter presses it
    connect(addButton, &QPushButton::clicked, this, &PanelWindow::askForModel);
    companionSwitch = new QCheckBox(tr("&Companion installed"), this);
    connect(companionSwitch, &QCheckBox::clicked, this, &PanelWindow::switchCompanion);

    auto *const head = new QHBoxLayout;
    head->setContentsMargins(Margin, Margin, Margin, Margin);
    head->addWidget(addButton);
    head->addStretch();
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

    emptyLabel = new TextLabel(this);
    emptyLabel->setAlignment(Qt::AlignCenter);
    emptyLabel->setMargin(2 * Margin);
    column->addWidget(emptyLabel, 1);

    scrollArea = new QScrollArea(this);
    scrollArea->setFrameShape(QFrame::NoFrame);
    scrollArea->setWidgetResizable(true);
    scrollArea->setFocusPolicy(Qt::NoFocus); // the buttons take it and are scrolled into view
    scrollArea->setWidget(content);
    column->addWidget(scrollArea, 1);
}

void PanelWindow::refresh()
{
    const QString refusal = onBench(benchDirectory, [this](Store &store) {
        const std::vector<Drive> drives = allDrives(store);
        companionSwitch->setChecked(isCompanionInstalled(store));
        showDrives(drives, records(drives, benchDirectory, imageDirectory));
    });
    const bool isReadable = refusal.isEmpty();
    emptyLabel->setText(isReadable
            ? tr("No drive is on this bench. \"Add drive…\" puts one on it.")
            : tr("There is no bench here that can be read:\n\n%1").arg(withoutDirectory(refusal)));
    addButton->setEnabled(isReadable);
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
        row->hide();
        row->deleteLater();
    }
}

/// A row for the drive below the others.
DriveRow *PanelWindow::addRow(const Drive &drive)
{
    auto *const row = new DriveRow(benchDirectory, drive, scrollArea->widget());
    connect(row, &DriveRow::pressed, this, &PanelWindow::actionEnded);
    rowColumn->insertWidget(rowColumn->count() - 1, row);
    return row;
}

/// The title of the window names the directory; in a message it only takes the place of what matters.
QString PanelWindow::withoutDirectory(QString message) const
{
    return message.remove(QString::fromStdString(benchDirectory) + QLatin1Char('/'));
}

void PanelWindow::askForModel()
{
    QStringList names;
    for (const Model &model : models()) {
        names.append(QString::fromLatin1(model.name));
    }
    auto *const dialog = new QInputDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAttribute(Qt::WA_WindowPropagation);
    dialog->setWindowTitle(tr("Add drive"));
    dialog->setLabelText(tr("A drive with old firmware and configuration, of the model:"));
    dialog->setComboBoxItems(names);
    connect(dialog, &QInputDialog::textValueSelected, this, &PanelWindow::addOutdated);
    dialog->open();
}

void PanelWindow::addOutdated(const QString &model)
{
    actionEnded(onBench(benchDirectory, [&model](Store &store) {
        Drive drive = newDrive(modelNamed(model.toStdString()));
        drive.flashFirmware = "1.00";
        drive.flashConfiguration = "1";
        store.change([&] {
            drive.serial = freeSerial(store.drives(), drive.model);
            addDrive(store, drive);
        });
    }));
}

void PanelWindow::switchCompanion(bool install)
{
    actionEnded(onBench(benchDirectory, [install](Store &store) { setCompanionInstalled(store, install); }));
}

void PanelWindow::actionEnded(const QString &refusal)
{
    actionRefusal = refusal;
    refresh();
}

} // namespace bench
