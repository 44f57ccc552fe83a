// SPDX-License-Identifier: MIT
#include "benchmarks/Median.h"
#include "companion/QDKUtilities.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/StandInTools.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFont>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include <malloc.h>

namespace {

double milliseconds(const std::function<void()> &run)
{
    QElapsedTimer timer;
    timer.start();
    run();
    const double elapsed = double(timer.nsecsElapsed()) / 1e6;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    return elapsed;
}

QVector<DeviceInfo> drives(int count)
{
    QVector<DeviceInfo> list;
    for (int number = 0; number < count; ++number) {
        list.append(DeviceRecords::usbDrive("SERIAL-NUMBER-" + std::to_string(number)));
    }
    return list;
}

QLabel *smallLabel(const QString &text, QFont font)
{
    auto *label = new QLabel(text);
    font.setPixelSize(10);
    label->setFixedHeight(12);
    label->setFont(font);
    return label;
}

QHBoxLayout *centred(const std::vector<QWidget *> &widgets)
{
    auto *row = new QHBoxLayout;
    row->addStretch();
    for (QWidget *widget : widgets) {
        row->addWidget(widget, 0, Qt::AlignHCenter);
    }
    row->addStretch();
    return row;
}

/// The widgets of one drive's page, made without any of the program's code.
QWidget *barePage(const QPixmap &drivePicture, const QPixmap &statusPicture)
{
    auto *outer = new QWidget;
    auto *content = new QWidget(outer);
    auto *layout = new QVBoxLayout(content);
    const auto picture = [](const QPixmap &pixmap) {
        auto *label = new QLabel;
        label->setPixmap(pixmap);
        return label;
    };
    layout->addWidget(picture(drivePicture), 0, Qt::AlignHCenter);
    const QFont font = QApplication::font();
    layout->addWidget(smallLabel("Tarvo Pebble", font), 0, Qt::AlignHCenter);
    layout->addWidget(smallLabel("(firmware version: <b>1.2</b> => <b>1.3</b> )", font), 0, Qt::AlignHCenter);
    layout->addLayout(centred({smallLabel("Firmware: Update required!", font), picture(statusPicture)}));
    layout->addLayout(centred({smallLabel("Configuration: Update required!", font), picture(statusPicture)}));
    layout->addSpacing(10);
    static const QIcon icon(":/firmwareUpdater/Update.png");
    auto *update = new QPushButton("Update Firmware and Configuration", content);
    update->setIcon(icon);
    layout->addWidget(update, 0, Qt::AlignCenter);
    auto *start = new QPushButton("Update Firmware", content);
    start->setIcon(icon);
    start->hide();
    auto *cancel = new QPushButton("Cancel", content);
    cancel->hide();
    layout->addLayout(centred({start, cancel}));
    auto *bar = new QProgressBar(content);
    bar->setRange(0, 0);
    bar->setMinimumWidth(300);
    bar->hide();
    layout->addLayout(centred({bar}));
    auto *finish = new QPushButton("Finish", content);
    finish->hide();
    layout->addWidget(finish, 0, Qt::AlignCenter);
    QObject::connect(content, &QObject::destroyed, outer, &QObject::deleteLater);
    return content;
}

/// Shows pages for that many drives in the stack, in place of the ones that it showed before.
void showBarePages(QStackedWidget *stack, int count)
{
    static const QPixmap drivePicture(":/firmwareUpdater/device/0x0E7A/1A20.png");
    static const QPixmap statusPicture =
        QPixmap(":/firmwareUpdater/Update.png").scaled(20, 20, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    auto *container = new QWidget;
    auto *scrollArea = new QScrollArea;
    scrollArea->setWidgetResizable(true);
    auto *column = new QVBoxLayout;
    column->addStretch();
    auto *row = new QHBoxLayout;
    for (int index = 0; index < count; ++index) {
        if (index % 3 == 0) {
            column->addLayout(row);
            column->addStretch();
            row = new QHBoxLayout;
            row->addStretch();
        }
        row->addWidget(barePage(drivePicture, statusPicture), 0, Qt::AlignHCenter);
        row->addStretch();
    }
    column->addLayout(row);
    column->addStretch();
    container->setLayout(column);
    scrollArea->setWidget(container);
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(scrollArea);
    layout->addWidget(smallLabel("Version", QApplication::font()));
    stack->insertWidget(0, page);
    QWidget *previous = stack->widget(1);
    stack->removeWidget(previous);
    delete previous;
}

void deliver(MainWindow &window, const QVector<DeviceInfo> &list)
{
    QMetaObject::invokeMethod(
        &window, "updateDeviceList", Qt::DirectConnection, Q_ARG(QVector<DeviceInfo>, list));
}

} // namespace

/// One refresh of the window beside bare construction of the same widgets, an unchanged list, and the heap
/// over ten thousand refreshes.
int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const StandInTools tools;
    ScriptedPlatform::holdQueries();
    MainWindow window(argc, argv);

    QWidget bareWindow;
    auto *stack = new QStackedWidget;
    stack->addWidget(new QWidget);
    (new QVBoxLayout(&bareWindow))->addWidget(stack);
    bareWindow.resize(850, 700);
    bareWindow.show();

    std::printf("%-44s %10s %10s %7s %6s\n", "", "program", "floor", "ratio", "aim");
    std::vector<double> shellCommands;
    for (const int count : {6, 60, 600}) {
        deliver(window, drives(count));
        std::vector<double> floors;
        std::vector<double> refreshes;
        // Turn by turn, so that whatever else the machine does falls on both.
        for (int turn = 0; turn < (count > 100 ? 9 : 51); ++turn) {
            const double shellCommand = milliseconds([] { QDKUtilities::isQDKInstalled(); });
            shellCommands.push_back(shellCommand);
            floors.push_back(milliseconds([stack, count] { showBarePages(stack, count); }));
            refreshes.push_back(milliseconds([&window] { window.updateWindow(); }) - shellCommand);
        }
        std::printf("%-44s %7.2f ms %7.2f ms %7.2f %6s\n",
            qPrintable(QString("refresh with %1 drives").arg(count)), median(refreshes), median(floors),
            median(refreshes) / median(floors), "1.20");
    }
    std::printf("%-44s %7.2f ms\n", "the companion check's shell command, apart", median(shellCommands));

    const QVector<DeviceInfo> list = drives(1000);
    deliver(window, list);
    const QVector<DeviceInfo> sameList = drives(1000);
    std::vector<double> deliveries;
    deliveries.reserve(101);
    for (int turn = 0; turn < 101; ++turn) {
        deliveries.push_back(milliseconds([&] { deliver(window, sameList); }));
    }
    std::printf("%-44s %7.3f ms %26s\n", "an unchanged list of 1,000 drives", median(deliveries), "1.000");

    deliver(window, drives(3));
    QMetaObject::invokeMethod(&window, "updateDevice", Q_ARG(QString, "SERIAL-NUMBER-1"));
    const auto refreshes = [&window](int count) {
        for (int turn = 0; turn < count; ++turn) {
            window.updateWindow();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCoreApplication::processEvents();
        }
        return qint64(mallinfo2().uordblks);
    };
    const qint64 before = refreshes(500);
    const qint64 after = refreshes(10000);
    std::printf("%-44s %7lld B %28s\n", "heap growth over 10,000 refreshes",
        static_cast<long long>(after - before), "none");
    return 0;
}
