#include "bench/panel/PanelWindow.h"

#include "bench/core/Companion.h"
#include "bench/core/Files.h"
#include "bench/panel/DriveRow.h"
#include "bench/panel/ElidedLabel.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <chrono>

namespace bench {

namespace {

constexpr std::chrono::milliseconds RegularInterval(250);
constexpr std::chrono::milliseconds SoonInterval(50);
constexpr int Margin = 16;
const QColor TextColour(0x20, 0x20, 0x20);
const QColor ProblemColour(0xA8, 0x1E, 0x1E);

} // namespace

PanelWindow::PanelWindow(const Bench &bench) : bench(bench)
{
    setWindowTitle(tr("Drive bench"));
    setWindowIcon(QIcon(QStringLiteral(":/firmwareUpdater/TarvoLogo.png")));
    QPalette white = palette();
    white.setColor(QPalette::Window, Qt::white);
    white.setColor(QPalette::WindowText, TextColour);
    setPalette(white);

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    addHead(column);
    addDrives(column);

    messageLine = new ElidedLabel(this);
    messageLine->setContentsMargins(Margin, 8, Margin, 8);
    QPalette red = white;
    red.setColor(QPalette::WindowText, ProblemColour);
    messageLine->setPalette(red);
    column->addWidget(messageLine);

    soon.setSingleShot(true);
    soon.setInterval(SoonInterval);
    connect(&soon, &QTimer::timeout, this, &PanelWindow::refresh);
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        if (!soon.isActive()) {
            soon.start();
        }
    });
    regularly.setInterval(RegularInterval);
    connect(&regularly, &QTimer::timeout, this, &PanelWindow::refresh);
    regularly.start();
    refresh();

    // Tall enough for all drives, where the screen is.
    const QSize content(scrollArea->minimumWidth(), scrollArea->widget()->sizeHint().height());
    const int others = sizeHint().height() - scrollArea->sizeHint().height();
    const QSize available = screen()->availableSize() * 9 / 10;
    resize(content.expandedTo(QSize(640, 240)).boundedTo(available - QSize(0, others)) + QSize(0, others));
}

PanelWindow::~PanelWindow()
{
    // A row may yet plug its drive in, for which it needs the bench.
    qDeleteAll(findChildren<DriveRow *>());
}

void PanelWindow::addHead(QVBoxLayout *column)
{
    auto *const folder = new ElidedLabel(this);
    folder->setText(bench.folder());
    companionSwitch = new QCheckBox(tr("Companion installed"), this);
    connect(companionSwitch, &QCheckBox::clicked, this, &PanelWindow::switchCompanion);

    auto *const head = new QHBoxLayout;
    head->setContentsMargins(Margin, 12, Margin, 12);
    head->setSpacing(Margin);
    head->addWidget(folder, 1);
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

void PanelWindow::watchFolders()
{
    for (const QString &folder : {bench.folder(), bench.folder() + QStringLiteral("/drives")}) {
        if (isFolder(folder) && !watcher.directories().contains(folder)) {
            watcher.addPath(folder);
        }
    }
}

void PanelWindow::refresh()
{
    watchFolders();
    QStringList problems;
    QString reason;
    QVector<Drive> drives;
    if (bench.exists(&reason)) {
        drives = bench.drives(&problems);
        companionSwitch->setChecked(bench.host(&problems).companionInstalled);
        for (QString &problem : problems) {
            problem += tr("; correct the file, or remove it");
        }
        emptyLabel->setText(tr("No drive is on this bench. Put one on it with:\n\n"
                               "drive-bench add Pebble --firmware 2.07 --bench %1")
                                .arg(bench.folder()));
    } else {
        problems.append(reason);
        emptyLabel->setText(
            tr("There is no bench here. Make one with six drives with:\n\ndrive-bench init --bench %1")
                .arg(bench.folder()));
    }
    companionSwitch->setEnabled(reason.isEmpty());
    showDrives(drives);
    showMessage(problems);
}

void PanelWindow::showDrives(const QVector<Drive> &drives)
{
    const QVector<DriveRow *> present = rows;
    for (DriveRow *row : present) {
        const bool found = std::any_of(drives.begin(), drives.end(),
            [row](const Drive &drive) { return drive.serial == row->serial(); });
        if (found) {
            continue;
        }
        // An open menu must not lose the row under it: the row goes when the menu is closed.
        if (changeTime(bench.driveFile(row->serial())) != 0 || row->hasOpenMenu()) {
            row->showUnreadable();
        } else {
            rows.removeOne(row);
            row->hide();
            row->deleteLater();
        }
    }
    for (const Drive &drive : drives) {
        const auto known = std::find_if(rows.begin(), rows.end(),
            [&drive](const DriveRow *row) { return row->serial() == drive.serial; });
        if (known != rows.end()) {
            (*known)->showDrive(drive);
            continue;
        }
        auto *const row = new DriveRow(&bench, drive, rowColumn->parentWidget());
        connect(row, &DriveRow::pressed, this, &PanelWindow::actionEnded);
        rowColumn->insertWidget(rowColumn->count() - 1, row);
        rows.append(row);
        row->showDrive(drive);
    }
    emptyLabel->setVisible(rows.isEmpty());
    scrollArea->setVisible(!rows.isEmpty());
    // However small the window is made, no button is out of reach.
    scrollArea->setMinimumWidth(scrollArea->widget()->minimumSizeHint().width()
        + scrollArea->verticalScrollBar()->sizeHint().width());
}

void PanelWindow::showMessage(const QStringList &problems)
{
    QString message = actionProblem;
    if (message.isEmpty() && !problems.isEmpty()) {
        message = problems.first();
        if (problems.size() > 1) {
            message += tr(" (and %1 more)").arg(problems.size() - 1);
        }
    }
    // The head of the window names the folder.
    message.remove(bench.folder() + QLatin1Char('/'));
    messageLine->setText(message);
}

void PanelWindow::switchCompanion(bool install)
{
    QString problem;
    Companion companion(bench.folder());
    const bool done = install ? companion.install(&problem) : companion.uninstall(&problem);
    actionEnded(done ? QString() : problem);
}

void PanelWindow::actionEnded(const QString &problem)
{
    actionProblem = problem;
    refresh();
}

} // namespace bench
