#include "ui/DeviceLayout.h"

#include "devices/Restart.h"
#include "ui/Pictures.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstdio>
#include <string>
#include <utility>

namespace {

// A prefix, since a serial number may be empty, as the object names of other widgets are.
constexpr const char *ObjectNamePrefix = "drive ";
constexpr int DevicePictureSize = 48;
constexpr int StatusPictureSize = 20;

QString textFrom(const std::string &bytes)
{
    return QString::fromLatin1(bytes.c_str());
}

/// Text for a screen reader: what cannot be printed is written as its code.
QString printable(const QString &text)
{
    QString result;
    for (const QChar character : text) {
        result += character.isPrint() ? QString(character)
                                      : QString("\\x%1").arg(character.unicode(), 2, 16, QChar('0'));
    }
    return result;
}

/// The text of a builder's label, which is not needed for anything else.
QString takeText(QLabel *label)
{
    QString text = label->text();
    delete label;
    return text;
}

QLabel *newTextLabel(const QString &text)
{
    auto *label = new QLabel(text);
    QFont font = QApplication::font();
    font.setPixelSize(10);
    label->setFixedHeight(12);
    label->setFont(font);
    return label;
}

QHBoxLayout *newStatusRow(QLabel *text, QLabel *icon)
{
    auto *row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(text, 0, Qt::AlignHCenter);
    row->addWidget(icon, 0, Qt::AlignHCenter);
    row->addStretch();
    return row;
}

} // namespace

DeviceLayout::DeviceLayout(QObject *mainWindow, DeviceInfo deviceInfo)
    : deviceInfo(std::move(deviceInfo)), mainWindow(mainWindow)
{
    QPalette whiteBackground = palette();
    whiteBackground.setBrush(QPalette::All, QPalette::Window, Qt::white);
    setPalette(whiteBackground);

    contentWidget = new QWidget(this);
    contentWidget->setObjectName(ObjectNamePrefix + textFrom(this->deviceInfo.serialNumber));
    contentWidget->setAccessibleName(driveName());
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

    const bool firmwareRequired = this->deviceInfo.firmwareStatus == Status::UpdateRequired;
    const bool configurationRequired = this->deviceInfo.configurationStatus == Status::UpdateRequired;
    const bool allUpToDate = this->deviceInfo.firmwareStatus == Status::UpToDate
        && this->deviceInfo.configurationStatus == Status::UpToDate;

    if (this->deviceInfo.chipsetType != Chipset::NotSupported) {
        updateButton = newButton("updateButton");
        if (firmwareRequired && configurationRequired) {
            updateButton->setText(tr("Update Firmware and Configuration"));
            updateButton->setIcon(Pictures::icon(Pictures::Update));
        } else if (firmwareRequired) {
            updateButton->setText(tr("Update Firmware"));
            updateButton->setIcon(Pictures::icon(Pictures::Update));
        } else if (configurationRequired) {
            updateButton->setText(tr("Update Configuration"));
            updateButton->setIcon(Pictures::icon(Pictures::Update));
        } else if (allUpToDate) {
            updateButton->setText(tr("Close"));
        } else {
            updateButton->setText(tr("Update"));
            updateButton->setIcon(Pictures::icon(Pictures::Warning));
        }
        if (allUpToDate) {
            connect(updateButton, SIGNAL(clicked(bool)), qApp, SLOT(quit()));
        } else {
            connect(updateButton, SIGNAL(clicked(bool)), this, SLOT(updateDevice()));
        }
        layout->addWidget(updateButton, 0, Qt::AlignCenter);
    }

    auto *buttonRow = new QHBoxLayout;
    buttonRow->addStretch();
    // Not the order of the tests above: a drive that needs both is confirmed with "Update Firmware".
    startButton = newButton("startButton");
    if (allUpToDate) {
        startButton->setText(tr("Update Firmware and Configuration"));
        startButton->setIcon(Pictures::icon(Pictures::Update));
    } else if (firmwareRequired) {
        startButton->setText(tr("Update Firmware"));
        startButton->setIcon(Pictures::icon(Pictures::Update));
    } else if (configurationRequired) {
        startButton->setText(tr("Update Configuration"));
        startButton->setIcon(Pictures::icon(Pictures::Update));
    } else {
        startButton->setText(tr("Update"));
        startButton->setIcon(Pictures::icon(Pictures::Warning));
    }
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
    modelNameLabel->setText(takeText(messageModelName()));
    firmwareVersionLabel->setText(takeText(messageWarning()));
    firmwareStatusLabel->setText(takeText(messageInstructions()));
    firmwareStatusIcon->hide();
    configurationStatusLabel->hide();
    configurationStatusIcon->hide();
    hideUpdateButton();
    startButton->show();
    cancelButton->show();
    progressBar->hide();
    finishButton->hide();
    update();
}

void DeviceLayout::updateInProgess()
{
    modelNameLabel->setText(takeText(messageModelName()));
    firmwareVersionLabel->setText(
        QString("<b>%1</b>").arg(tr("DO NOT disconnect the device during the firmware update.")));
    firmwareStatusLabel->setText(
        QString("<b>%1</b>").arg(tr("Doing so may cause irreparable harm to your data and/or disk.")));
    firmwareStatusIcon->hide();
    configurationStatusLabel->hide();
    configurationStatusIcon->hide();
    hideUpdateButton();
    startButton->hide();
    cancelButton->hide();
    progressBar->setAccessibleName(tr("Updating the device"));
    progressBar->show();
    finishButton->hide();
    update();
}

void DeviceLayout::updateSuccess()
{
    modelNameLabel->setText(successLine());
    firmwareVersionLabel->hide();
    firmwareStatusLabel->setText(takeText(messageFirmwareStatus()));
    configurationStatusLabel->setText(takeText(messageConfigurationStatus()));
    // The icons on screen stay those of the construction; the page keeps the new ones to itself.
    firmwareStatusIcon->setParent(this);
    configurationStatusIcon->setParent(this);
    hideUpdateButton();
    startButton->hide();
    cancelButton->hide();
    progressBar->hide();
    finishButton->setEnabled(true);
    finishButton->show();
    update();
}

void DeviceLayout::restartDevice()
{
    modelNameLabel->setText(successLine());
    firmwareVersionLabel->hide();
    firmwareStatusLabel->hide();
    setPicture(firmwareStatusIcon, Pictures::Warning, DevicePictureSize, tr("Warning"));
    configurationStatusLabel->setText(takeText(messageSuccess()));
    configurationStatusIcon->hide();
    progressBar->setAccessibleName(tr("Waiting for the device to be powered off and on"));
    progressBar->show();
    hideUpdateButton();
    startButton->hide();
    cancelButton->hide();
    finishButton->hide();
    update();
}

void DeviceLayout::updateFailure()
{
    modelNameLabel->setText(takeText(messageModelName()));
    firmwareVersionLabel->hide();
    firmwareStatusLabel->hide();
    setPicture(firmwareStatusIcon, Pictures::Error, DevicePictureSize, tr("Error"));
    configurationStatusLabel->setText(takeText(messageFailure()));
    configurationStatusIcon->hide();
    hideUpdateButton();
    startButton->hide();
    cancelButton->hide();
    progressBar->hide();
    finishButton->show();
    update();
}

void DeviceLayout::updateDevice()
{
    connect(this, SIGNAL(updateDevice(QString)), mainWindow, SLOT(updateDevice(QString)));
    emit updateDevice(textFrom(deviceInfo.serialNumber));
}

void DeviceLayout::startUpdate()
{
    connect(this, SIGNAL(startUpdate(QString)), mainWindow, SLOT(startUpdate(QString)));
    emit startUpdate(textFrom(deviceInfo.serialNumber));
}

QLabel *DeviceLayout::getIcon()
{
    QString path;
    QString name = tr("Picture of the Tarvo %1").arg(printable(textFrom(deviceInfo.modelName)));
    if (deviceInfo.vendorId == Vendor::Usb) {
        char buffer[512];
        std::snprintf(buffer, sizeof buffer, ":/firmwareUpdater/device/0x0E7A/%04X.png",
            static_cast<unsigned>(deviceInfo.productId));
        path = buffer;
    } else if (deviceInfo.vendorId == Vendor::FireWire) {
        path = QString(":/firmwareUpdater/device/0xC5E2/%1.png").arg(textFrom(deviceInfo.modelName));
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
    return newTextLabel(QString("Tarvo %1").arg(textFrom(deviceInfo.modelName)));
}

QLabel *DeviceLayout::messageFirmwareVersion()
{
    if (deviceInfo.chipsetType == Chipset::NotSupported) {
        return newTextLabel(QString());
    }
    switch (deviceInfo.firmwareStatus) {
    case Status::UpdateRequired:
        return newTextLabel(QString("%1 <b>%2</b> => <b>%3</b> %4")
                                .arg(tr("(firmware version:"))
                                .arg(textFrom(deviceInfo.firmwareVersion))
                                .arg(textFrom(deviceInfo.newFirmwareVersion))
                                .arg(tr(")")));
    case Status::UpToDate:
        return newTextLabel(QString("%1 <b>%2</b> %3")
                                .arg(tr("(firmware version:"))
                                .arg(textFrom(deviceInfo.firmwareVersion))
                                .arg(tr(")")));
    default:
        return newTextLabel(QString("<b>%1</b>").arg(tr("Unknown firmware version !")));
    }
}

QLabel *DeviceLayout::messageFirmwareStatus()
{
    if (deviceInfo.chipsetType == Chipset::NotSupported) {
        firmwareStatusIcon = newStatusIcon(Pictures::Warning, tr("Not supported"));
        return newTextLabel(QString("<b>%1</b>").arg(tr("Device not supported !")));
    }
    switch (deviceInfo.firmwareStatus) {
    case Status::UpdateRequired:
        firmwareStatusIcon = newStatusIcon(Pictures::Update, tr("Update required"));
        return newTextLabel(tr("Firmware: Update required!"));
    case Status::UpToDate:
        firmwareStatusIcon = newStatusIcon(Pictures::Ok, tr("Up to date"));
        return newTextLabel(tr("Firmware: Up to date."));
    default:
        firmwareStatusIcon = newStatusIcon(Pictures::Warning, tr("Unknown status"));
        return newTextLabel(tr("Firmware: Unknown status!"));
    }
}

QLabel *DeviceLayout::messageConfigurationStatus()
{
    if (deviceInfo.chipsetType == Chipset::NotSupported) {
        configurationStatusIcon = new QLabel;
        return newTextLabel(QString());
    }
    switch (deviceInfo.configurationStatus) {
    case Status::UpdateRequired:
        configurationStatusIcon = newStatusIcon(Pictures::Update, tr("Update required"));
        return newTextLabel(tr("Configuration: Update required!"));
    case Status::UpToDate:
        configurationStatusIcon = newStatusIcon(Pictures::Ok, tr("Up to date"));
        return newTextLabel(tr("Configuration: Up to date."));
    default:
        configurationStatusIcon = newStatusIcon(Pictures::Warning, tr("Unknown status"));
        return newTextLabel(tr("Configuration: Unknown status!"));
    }
}

QLabel *DeviceLayout::messageInstructions()
{
    return newTextLabel(QString("%1<b>%2</b>%3 %4<b>%5</b>%6")
                            .arg(tr("To update your device, press "))
                            .arg(tr("\"Update\""))
                            .arg(tr(" button."))
                            .arg(tr("To update later, press "))
                            .arg(tr("\"Cancel\""))
                            .arg(tr(" button.")));
}

QLabel *DeviceLayout::messageWarning()
{
    const bool firmwareRequired = deviceInfo.firmwareStatus == Status::UpdateRequired;
    const bool configurationRequired = deviceInfo.configurationStatus == Status::UpdateRequired;
    const QString modelName = textFrom(deviceInfo.modelName);
    if (firmwareRequired) {
        return newTextLabel(
            QString("%1<b>%2</b>%3<b>%4</b>%5<b>%6</b>%7")
                .arg(tr("You are about to update your Tarvo "))
                .arg(modelName)
                .arg(configurationRequired ? tr(" firmware and configuration. (\"") : tr(" firmware. (\""))
                .arg(textFrom(deviceInfo.firmwareVersion))
                .arg(tr("\" => \""))
                .arg(textFrom(deviceInfo.newFirmwareVersion))
                .arg(tr("\")")));
    }
    if (configurationRequired) {
        return newTextLabel(QString("%1<b>%2</b>%3")
                                .arg(tr("You are about to update your Tarvo "))
                                .arg(modelName)
                                .arg(tr(" configuration.")));
    }
    return newTextLabel(QString());
}

QLabel *DeviceLayout::messageSuccess()
{
    if (Chipset::isUsbBridge(deviceInfo.chipsetType)) {
        return newTextLabel(restartInstruction());
    }
    switch (deviceInfo.chipsetType) {
    case Chipset::NoUpdater:
    case Chipset::OxSemiFireWire944:
        return newTextLabel(tr("Your drive is now ready for use."));
    default:
        return newTextLabel(QString());
    }
}

QLabel *DeviceLayout::messageFailure()
{
    return newTextLabel(QString("%1<b>%2</b>%3")
                            .arg(tr("Error while updating your Tarvo "))
                            .arg(textFrom(deviceInfo.modelName))
                            .arg(tr(" device. Please retry.")));
}

QLabel *DeviceLayout::newStatusIcon(const char *path, const QString &name) const
{
    auto *icon = new QLabel;
    setPicture(icon, path, StatusPictureSize, name);
    return icon;
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
    button->setAccessibleDescription(driveName());
    return button;
}

/// What tells the drive from others of its model, in printable characters.
QString DeviceLayout::driveName() const
{
    return tr("Tarvo %1, serial number %2")
        .arg(printable(textFrom(deviceInfo.modelName)), printable(textFrom(deviceInfo.serialNumber)));
}

/// The first line of a page whose drive was updated.
QString DeviceLayout::successLine() const
{
    return QString("%1<b>%2</b>%3")
        .arg(tr("Your Tarvo "))
        .arg(textFrom(deviceInfo.modelName))
        .arg(tr(" has been successfully updated."));
}

/// How the drive is switched off and on; empty for a product that is not known.
QString DeviceLayout::restartInstruction() const
{
    QString opening;
    switch (restartOf(deviceInfo.chipsetType, deviceInfo.productId)) {
    case Restart::Unplug:
        opening = tr("Please unplug and replug your Tarvo ");
        break;
    case Restart::PowerButton:
        opening = tr("Please use the power button on your Tarvo ");
        break;
    default:
        return QString();
    }
    return QString("%1<b>%2</b>%3")
        .arg(opening)
        .arg(textFrom(deviceInfo.modelName))
        .arg(tr(" hard drive to power off and power on the device."));
}

/// Drives behind an unsupported bridge have no update button.
void DeviceLayout::hideUpdateButton()
{
    if (updateButton != nullptr) {
        updateButton->hide();
    }
}
