// SPDX-License-Identifier: MIT
#include "ui/DeviceLayout.h"

#include "devices/DeviceTexts.h"
#include "ui/ButtonFaces.h"
#include "ui/Pictures.h"
#include "ui/TextLine.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <initializer_list>
#include <utility>

namespace {

// A prefix, since a serial number may be empty, as the object names of other widgets are.
constexpr const char *ObjectNamePrefix = "drive ";
constexpr int DevicePictureSize = 48;
constexpr int StatusPictureSize = 20;

QHBoxLayout *newStatusRow(QLabel *text, QLabel *icon)
{
    auto *row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(text, 0, Qt::AlignHCenter);
    row->addWidget(icon, 0, Qt::AlignHCenter);
    row->addStretch();
    return row;
}

/// Hides them in that order. Drives behind an unsupported bridge have no update button.
void hideAll(std::initializer_list<QWidget *> widgets)
{
    for (QWidget *widget : widgets) {
        if (widget != nullptr) {
            widget->hide();
        }
    }
}

} // namespace

DeviceLayout::DeviceLayout(QObject *mainWindow, DeviceInfo device)
    : deviceInfo(std::move(device)), mainWindow(mainWindow)
{
    QPalette whiteBackground = palette();
    whiteBackground.setBrush(QPalette::All, QPalette::Window, Qt::white);
    setPalette(whiteBackground);

    contentWidget = new QWidget(this);
    contentWidget->setObjectName(ObjectNamePrefix + DeviceTexts::textFrom(deviceInfo.serialNumber));
    contentWidget->setAccessibleName(DeviceTexts::driveName(deviceInfo));
    // The buttons on it are connected to this page's slots, so the page lives as long.
    connect(contentWidget, SIGNAL(destroyed()), this, SLOT(deleteLater()));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(getIcon(), 0, Qt::AlignHCenter);
    modelNameLabel = messageModelName();
    layout->addWidget(modelNameLabel, 0, Qt::AlignHCenter);
    firmwareVersionLabel = messageFirmwareVersion();
    layout->addWidget(firmwareVersionLabel, 0, Qt::AlignHCenter);
    firmwareStatusLabel = messageFirmwareStatus();
    layout->addLayout(newStatusRow(firmwareStatusLabel, firmwareStatusIcon));
    configurationStatusLabel = messageConfigurationStatus();
    layout->addLayout(newStatusRow(configurationStatusLabel, configurationStatusIcon));
    layout->addSpacing(10);

    if (deviceInfo.chipsetType != Chipset::NotSupported) {
        updateButton = newButton("updateButton");
        ButtonFaces::setUpdateFace(updateButton, deviceInfo);
        if (deviceInfo.firmwareStatus == Status::UpToDate
            && deviceInfo.configurationStatus == Status::UpToDate) {
            connect(updateButton, SIGNAL(clicked(bool)), qApp, SLOT(quit()));
        } else {
            connect(updateButton, SIGNAL(clicked(bool)), this, SLOT(updateDevice()));
        }
        layout->addWidget(updateButton, 0, Qt::AlignCenter);
    }

    auto *buttonRow = new QHBoxLayout;
    buttonRow->addStretch();
    startButton = newButton("startButton");
    ButtonFaces::setStartFace(startButton, deviceInfo);
    startButton->hide();
    connect(startButton, SIGNAL(clicked(bool)), this, SLOT(startUpdate()));
    buttonRow->addWidget(startButton);
    buttonRow->addStretch();

    cancelButton = newButton("cancelButton");
    cancelButton->setText(tr("Cancel"));
    cancelButton->hide();
    connect(cancelButton, SIGNAL(clicked(bool)), mainWindow, SLOT(cancelUpdate()));
    buttonRow->addWidget(cancelButton);
    buttonRow->addStretch();
    layout->addLayout(buttonRow);

    progressBar = new QProgressBar(this);
    progressBar->setRange(0, 0);
    progressBar->setMinimumWidth(300);
    progressBar->hide();
    auto *progressRow = new QHBoxLayout;
    progressRow->addStretch();
    // On the left side only, on purpose: the bar sits a little to the right.
    progressRow->addSpacing(25);
    progressRow->addWidget(progressBar, 0, Qt::AlignHCenter);
    progressRow->addStretch();
    layout->addLayout(progressRow);

    finishButton = newButton("finishButton");
    finishButton->setText(tr("Finish"));
    finishButton->hide();
    connect(finishButton, SIGNAL(clicked(bool)), qApp, SLOT(quit()));
    layout->addWidget(finishButton, 0, Qt::AlignCenter);

    contentWidget->setLayout(layout);
}

void DeviceLayout::deviceSelected()
{
    setTextLine(modelNameLabel, DeviceTexts::modelName(deviceInfo));
    setTextLine(firmwareVersionLabel, DeviceTexts::warning(deviceInfo));
    setTextLine(firmwareStatusLabel, DeviceTexts::instructions());
    hideAll({firmwareStatusIcon, configurationStatusLabel, configurationStatusIcon, updateButton});
    startButton->show();
    cancelButton->show();
    hideAll({progressBar, finishButton});
    update();
}

void DeviceLayout::updateInProgess()
{
    setTextLine(modelNameLabel, DeviceTexts::modelName(deviceInfo));
    setTextLine(firmwareVersionLabel, DeviceTexts::doNotDisconnect());
    setTextLine(firmwareStatusLabel, DeviceTexts::harmOfDisconnecting());
    hideAll({firmwareStatusIcon, configurationStatusLabel, configurationStatusIcon, updateButton, startButton,
        cancelButton});
    progressBar->setAccessibleName(tr("Updating the device"));
    progressBar->show();
    finishButton->hide();
    update();
}

void DeviceLayout::updateSuccess()
{
    setTextLine(modelNameLabel, DeviceTexts::updated(deviceInfo));
    firmwareVersionLabel->hide();
    setTextLine(firmwareStatusLabel, DeviceTexts::firmwareStatus(deviceInfo));
    setTextLine(configurationStatusLabel, DeviceTexts::configurationStatus(deviceInfo));
    hideAll({updateButton, startButton, cancelButton, progressBar});
    finishButton->setEnabled(true);
    finishButton->show();
    update();
}

void DeviceLayout::restartDevice()
{
    setTextLine(modelNameLabel, DeviceTexts::updated(deviceInfo));
    hideAll({firmwareVersionLabel, firmwareStatusLabel});
    setPicture(firmwareStatusIcon, Pictures::Warning, DevicePictureSize, tr("Warning"));
    setTextLine(configurationStatusLabel, DeviceTexts::success(deviceInfo));
    configurationStatusIcon->hide();
    progressBar->setAccessibleName(tr("Waiting for the device to be powered off and on"));
    progressBar->show();
    hideAll({updateButton, startButton, cancelButton, finishButton});
    update();
}

void DeviceLayout::updateFailure()
{
    setTextLine(modelNameLabel, DeviceTexts::modelName(deviceInfo));
    hideAll({firmwareVersionLabel, firmwareStatusLabel});
    setPicture(firmwareStatusIcon, Pictures::Error, DevicePictureSize, tr("Error"));
    setTextLine(configurationStatusLabel, DeviceTexts::failure(deviceInfo));
    hideAll({configurationStatusIcon, updateButton, startButton, cancelButton, progressBar});
    finishButton->show();
    update();
}

void DeviceLayout::updateDevice()
{
    connect(this, SIGNAL(updateDevice(QString)), mainWindow, SLOT(updateDevice(QString)));
    emit updateDevice(DeviceTexts::textFrom(deviceInfo.serialNumber));
}

void DeviceLayout::startUpdate()
{
    connect(this, SIGNAL(startUpdate(QString)), mainWindow, SLOT(startUpdate(QString)));
    emit startUpdate(DeviceTexts::textFrom(deviceInfo.serialNumber));
}

QLabel *DeviceLayout::getIcon()
{
    QString path;
    QString name = tr("Picture of the Tarvo %1").arg(DeviceTexts::printable(deviceInfo.modelName));
    if (deviceInfo.vendorId == Vendor::Usb) {
        path = QString::asprintf(":/firmwareUpdater/device/0x0E7A/%04X.png", unsigned(deviceInfo.productId));
    } else if (deviceInfo.vendorId == Vendor::FireWire) {
        path = QString(":/firmwareUpdater/device/0xC5E2/%1.png")
                   .arg(DeviceTexts::textFrom(deviceInfo.modelName));
    } else {
        path = Pictures::Warning;
        name = tr("Warning");
    }
    if (path.isNull()) {
        path = ":/firmwareUpdater/device/UnknownDevice.png";
    }
    auto *icon = new QLabel;
    setPicture(icon, path, DevicePictureSize, name);
    return icon;
}

QLabel *DeviceLayout::messageModelName()
{
    return newTextLine(DeviceTexts::modelName(deviceInfo));
}

QLabel *DeviceLayout::messageFirmwareVersion()
{
    return newTextLine(DeviceTexts::firmwareVersion(deviceInfo));
}

QLabel *DeviceLayout::messageFirmwareStatus()
{
    firmwareStatusIcon = new QLabel;
    if (deviceInfo.chipsetType == Chipset::NotSupported) {
        setPicture(firmwareStatusIcon, Pictures::Warning, StatusPictureSize, tr("Not supported"));
    } else {
        setStatusPicture(firmwareStatusIcon, deviceInfo.firmwareStatus);
    }
    return newTextLine(DeviceTexts::firmwareStatus(deviceInfo));
}

QLabel *DeviceLayout::messageConfigurationStatus()
{
    configurationStatusIcon = new QLabel;
    if (deviceInfo.chipsetType != Chipset::NotSupported) {
        setStatusPicture(configurationStatusIcon, deviceInfo.configurationStatus);
    }
    return newTextLine(DeviceTexts::configurationStatus(deviceInfo));
}

QLabel *DeviceLayout::messageInstructions()
{
    return newTextLine(DeviceTexts::instructions());
}

QLabel *DeviceLayout::messageWarning()
{
    return newTextLine(DeviceTexts::warning(deviceInfo));
}

QLabel *DeviceLayout::messageSuccess()
{
    return newTextLine(DeviceTexts::success(deviceInfo));
}

QLabel *DeviceLayout::messageFailure()
{
    return newTextLine(DeviceTexts::failure(deviceInfo));
}

void DeviceLayout::setStatusPicture(QLabel *label, std::int32_t status) const
{
    switch (status) {
    case Status::UpdateRequired:
        setPicture(label, Pictures::Update, StatusPictureSize, tr("Update required"));
        break;
    case Status::UpToDate:
        setPicture(label, Pictures::Ok, StatusPictureSize, tr("Up to date"));
        break;
    default:
        setPicture(label, Pictures::Warning, StatusPictureSize, tr("Unknown status"));
    }
}

/// `name` is what a screen reader says; a picture that does not exist has none.
void DeviceLayout::setPicture(QLabel *label, const QString &path, int size, const QString &name) const
{
    const auto *window = qobject_cast<const QWidget *>(mainWindow);
    const QPixmap picture =
        Pictures::scaled(path, size, window != nullptr ? window->devicePixelRatioF() : devicePixelRatioF());
    label->setPixmap(picture);
    label->setAccessibleName(picture.isNull() ? QString() : name);
}

/// A button of the page. The main window finds it by its object name.
QPushButton *DeviceLayout::newButton(const char *name)
{
    auto *button = new QPushButton(this);
    button->setObjectName(name);
    button->setAccessibleDescription(DeviceTexts::driveName(deviceInfo));
    return button;
}
