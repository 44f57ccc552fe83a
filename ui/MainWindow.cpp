// SPDX-License-Identifier: MIT
#include "ui/MainWindow.h"

#include "Version.h"
#include "companion/CompanionTexts.h"
#include "companion/QDKUtilities.h"
#include "devices/DeviceDiscoveryThread.h"
#include "devices/DeviceTexts.h"
#include "ui/DeviceLayout.h"
#include "ui/DialogKeys.h"
#include "ui/LightPalette.h"
#include "ui/PageState.h"
#include "ui/ScreenFit.h"
#include "ui/TextLine.h"
#include "update/UpdateDeviceThread.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <string>

#include <unistd.h>

namespace {
constexpr int DevicesPerRow = 3;
constexpr const char *Version = TarvoVersion;
constexpr const char *LogoPath = ":/firmwareUpdater/TarvoLogo.png";

QLabel *newVersionLabel()
{
    QLabel *label = newTextLine(QString("Orvi: %1").arg(Version));
    QFont font = label->font();
    font.setStyle(QFont::StyleItalic);
    label->setFont(font);
    return label;
}

} // namespace

MainWindow::MainWindow(int argc, char **argv) : argc(argc), argv(argv)
{
    resizeWindow(0);
    setWindowIcon(QIcon(LogoPath));
    titleLabel = new QLabel(tr("Tarvo Firmware Updater"));
    setWindowTitle(titleLabel->text());

    setPalette(lightPalette(palette()));

    auto *blankPage = new QWidget(this);
    pageStack = new QStackedWidget(this);
    pageStack->addWidget(blankPage);

    auto *layout = new QVBoxLayout;
    layout->addWidget(pageStack);
    setLayout(layout);
    addDialogKeys(this);
    fitToScreen(this);

    deviceList.clear();
    updateWindow();

    discoveryThread = new DeviceDiscoveryThread;
    // Lists arrive queued, so their type has to be known before the first one is sent.
    qRegisterMetaType<QVector<DeviceInfo>>("QVector<DeviceInfo>");
    connect(discoveryThread, SIGNAL(updateDeviceList(QVector<DeviceInfo>)), this,
        SLOT(updateDeviceList(QVector<DeviceInfo>)));
    discoveryThread->start(QThread::InheritPriority);
    setVisible(true);
}

MainWindow::~MainWindow()
{
    discoveryThread->stopRequested.store(true, std::memory_order_relaxed);
}

void MainWindow::updateWindow()
{
    auto *container = new QWidget;
    auto *scrollArea = new QScrollArea;
    scrollArea->setWidgetResizable(true);
    auto *column = new QVBoxLayout;
    column->addStretch();

    const bool warned = warnOfCompanion();
    if (!warned) {
        if (deviceList.empty()) {
            addNoDriveMessage(column);
        } else {
            addDevicePages(column);
        }
    }
    container->setLayout(column);
    scrollArea->setWidget(container);
    if (updateState == Idle && !deviceList.empty() && !warned) {
        scrollArea->setAccessibleName(tr("Devices: %1").arg(deviceList.size()));
    } else {
        describeLook(scrollArea);
    }
    takeFocusToScroll(scrollArea);
    followFocus(scrollArea);

    auto *footer = new QHBoxLayout;
    footer->setContentsMargins(0, 0, 0, 0);
    footer->addWidget(newVersionLabel());

    auto *pageLayout = new QVBoxLayout;
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->addWidget(scrollArea);
    pageLayout->addLayout(footer);
    auto *page = new QWidget;
    page->setLayout(pageLayout);
    showPage(page);
    update();
}

/// Puts the page in the place of the one on the stack.
void MainWindow::showPage(QWidget *page)
{
    pageStack->insertWidget(0, page);
    QWidget *previousPage = pageStack->widget(1);
    const PageState state(*previousPage);
    // Before the old page goes: on its way to the button the focus would stop at the scroll area.
    state.moveFocusTo(*page);
    pageStack->removeWidget(previousPage);
    delete previousPage;

    resizeWindow(static_cast<int>(deviceList.size()));
    state.scrollAndAnnounce(*page);
}

/// True when the companion product is installed and the user has now been told so, once a run.
bool MainWindow::warnOfCompanion()
{
    if (!QDKUtilities::isQDKInstalled() || quaydeskWarningShown) {
        return false;
    }
    // Set before the box opens: lists and results that arrive while it is open refresh the window too.
    quaydeskWarningShown = true;
    QMessageBox box(QMessageBox::Warning, tr("Tarvo Quaydesk installed and running"),
        tr(CompanionTexts::Installed), QMessageBox::Ok);
    box.setWindowIcon(QIcon(LogoPath));
    box.setDefaultButton(QMessageBox::Ok);
    box.button(QMessageBox::Ok)->setText(tr("Ok"));
    for (QLabel *label : box.findChildren<QLabel *>()) {
        if (label->text().isEmpty()) {
            label->setAccessibleName(tr("Warning")); // the picture
        }
    }
    if (box.exec() == QMessageBox::Ok) {
        quitAtStartup = true;
    }
    return true;
}

void MainWindow::addNoDriveMessage(QBoxLayout *column)
{
    auto *message = new QLabel(QString("<b>%1</b><br/><br/><b>%2</b>")
                                   .arg(tr("No compatible Tarvo device were found."))
                                   .arg(tr("Please plug a compatible Tarvo device.")));
    message->setAlignment(Qt::AlignCenter);
    message->setWordWrap(true);
    column->addWidget(message);
    column->addStretch();
}

void MainWindow::addDevicePages(QBoxLayout *column)
{
    auto *row = new QHBoxLayout;
    row->addStretch();
    for (std::size_t index = 0; index < deviceList.size(); ++index) {
        const DeviceInfo &device = deviceList[index];
        if (updateState != Idle && !isSelected(device)) {
            continue;
        }
        auto *devicePage = new DeviceLayout(this, device);
        // The first row is closed empty, so the drives start in the second.
        if (updateState == Idle && index % DevicesPerRow == 0) {
            column->addLayout(row);
            column->addStretch();
            row = new QHBoxLayout;
            row->addStretch();
        }
        showState(devicePage);
        row->addWidget(devicePage->contentWidget, 0, Qt::AlignHCenter);
        row->addStretch();
    }
    column->addLayout(row);
    column->addStretch();
}

/// Turns a fresh page into the look of the update's state.
void MainWindow::showState(DeviceLayout *devicePage) const
{
    switch (updateState) {
    case Idle:
        break;
    case DeviceSelected:
        devicePage->deviceSelected();
        break;
    case InProgress:
        devicePage->updateInProgess();
        break;
    case Success:
        devicePage->updateSuccess();
        break;
    case RestartDevice:
        devicePage->restartDevice();
        break;
    case Failure:
        devicePage->updateFailure();
        break;
    }
}

void MainWindow::resizeWindow(int deviceCount)
{
    setMinimumSize(350, 300);
    setMaximumSize(850, 700);
    const int rows = (deviceCount + DevicesPerRow - 1) / DevicesPerRow;
    resize(850, rows * 200 + 120);
}

void MainWindow::updateDeviceList(QVector<DeviceInfo> incoming)
{
    const std::vector<DeviceInfo> newList(incoming.cbegin(), incoming.cend());
    if (newList == deviceList) {
        return;
    }
    deviceList = newList;
    if (updateState == RestartDevice) {
        followUpdatedDevice(newList);
    } else {
        // The page of the current state stays on screen once more; the next change shows all drives.
        updateWindow();
        updateState = Idle;
    }
}

/// Waits for the updated drive to go away and, after that, for it to come back.
void MainWindow::followUpdatedDevice(const std::vector<DeviceInfo> &newList)
{
    bool found = false;
    for (const DeviceInfo &device : newList) {
        if (!isSelected(device)) {
            continue;
        }
        if (updatedDeviceUnplugged) {
            updateState = Success;
            updateWindow();
        } else {
            found = true;
        }
    }
    updatedDeviceUnplugged = !found;
}

void MainWindow::updateDevice(QString deviceSerialNumber)
{
    selectedSerialNumber = deviceSerialNumber;
    updateState = DeviceSelected;
    updateWindow();
}

void MainWindow::startUpdate(QString deviceSerialNumber)
{
    discoveryThread->discoveryEnabled.store(false, std::memory_order_relaxed);
    selectedSerialNumber = deviceSerialNumber;

    DeviceInfo device;
    // A copy, here and for the result: a refresh can show the companion warning, and while that is open
    // a new list may arrive.
    const std::vector<DeviceInfo> devices = deviceList;
    for (const DeviceInfo &candidate : devices) {
        if (isSelected(candidate)) {
            device = candidate;
            updateState = InProgress;
            updateWindow();
        }
    }

    updateThread = new UpdateDeviceThread(device, std::string(argv[0]));
    connect(updateThread, SIGNAL(updateResult(bool)), this, SLOT(updateResult(bool)));
    updateThread->start(QThread::InheritPriority);
}

void MainWindow::updateResult(bool result)
{
    if (!result) {
        // Discovery stays paused: after a failure the list is frozen until the program is started again.
        updateState = Failure;
        updateWindow();
        return;
    }
    const std::vector<DeviceInfo> devices = deviceList;
    for (const DeviceInfo &device : devices) {
        if (!isSelected(device)) {
            continue;
        }
        if (Chipset::isUsbBridge(device.chipsetType)) {
            updatedDeviceUnplugged = false;
            restartSecondFlag = false;
            updateState = RestartDevice;
        } else {
            updateState = Success;
        }
        updateWindow();
    }
    discoveryThread->discoveryEnabled.store(true, std::memory_order_relaxed);
    updateWindow();
}

void MainWindow::cancelUpdate()
{
    selectedSerialNumber = "";
    updateState = Idle;
    updateWindow();
}

void MainWindow::terminateUpdate()
{
    selectedSerialNumber = "";
    updateState = Idle;
    discoveryThread->discoveryEnabled.store(true, std::memory_order_relaxed);
    updateWindow();
}

void MainWindow::onExit()
{
    QDKUtilities::startService();
    sleep(1);
    if (relaunchQuaydeskOnExit) {
        QDKUtilities::launchQDK();
    } else if (relaunchStatusItemOnExit) {
        QDKUtilities::launchQDKStatusItem();
    }
}

bool MainWindow::isSelected(const DeviceInfo &device) const
{
    return DeviceTexts::textFrom(device.serialNumber) == selectedSerialNumber;
}
