// SPDX-License-Identifier: MIT
#include "ui/ButtonFaces.h"

#include "devices/DeviceInfo.h"
#include "ui/Pictures.h"

#include <QCoreApplication>
#include <QPushButton>

namespace {

/// What a button reads for a drive of these statuses.
struct ButtonFace
{
    std::int32_t firmwareStatus;
    std::int32_t configurationStatus;
    const char *text;
    const char *icon; ///< null for none
};

constexpr const char *UpdateBoth = QT_TRANSLATE_NOOP("DeviceLayout", "Update Firmware and Configuration");
constexpr const char *UpdateFirmware = QT_TRANSLATE_NOOP("DeviceLayout", "Update Firmware");
constexpr const char *UpdateConfiguration = QT_TRANSLATE_NOOP("DeviceLayout", "Update Configuration");
constexpr const char *Update = QT_TRANSLATE_NOOP("DeviceLayout", "Update");
constexpr const char *Close = QT_TRANSLATE_NOOP("DeviceLayout", "Close");

constexpr std::int32_t Any = -1; // in a face only: every status fits

// The first face that fits is the button's. The two tables differ on purpose: a drive that needs both updates
// is confirmed with "Update Firmware".
constexpr ButtonFace UpdateButtonFaces[] = {
    {Status::UpdateRequired, Status::UpdateRequired, UpdateBoth, Pictures::Update},
    {Status::UpdateRequired, Any, UpdateFirmware, Pictures::Update},
    {Any, Status::UpdateRequired, UpdateConfiguration, Pictures::Update},
    {Status::UpToDate, Status::UpToDate, Close, nullptr},
    {Any, Any, Update, Pictures::Warning},
};
constexpr ButtonFace StartButtonFaces[] = {
    {Status::UpToDate, Status::UpToDate, UpdateBoth, Pictures::Update},
    {Status::UpdateRequired, Any, UpdateFirmware, Pictures::Update},
    {Any, Status::UpdateRequired, UpdateConfiguration, Pictures::Update},
    {Any, Any, Update, Pictures::Warning},
};

bool fits(const ButtonFace &face, const DeviceInfo &device)
{
    return (face.firmwareStatus == Any || face.firmwareStatus == device.firmwareStatus)
        && (face.configurationStatus == Any || face.configurationStatus == device.configurationStatus);
}

/// The last face fits every drive.
template <typename Faces>
void setFace(QPushButton *button, const Faces &faces, const DeviceInfo &device)
{
    for (const ButtonFace &face : faces) {
        if (fits(face, device)) {
            button->setText(QCoreApplication::translate("DeviceLayout", face.text));
            button->setIcon(Pictures::icon(face.icon));
            return;
        }
    }
}

} // namespace

void ButtonFaces::setUpdateFace(QPushButton *button, const DeviceInfo &device)
{
    setFace(button, UpdateButtonFaces, device);
}

void ButtonFaces::setStartFace(QPushButton *button, const DeviceInfo &device)
{
    setFace(button, StartButtonFaces, device);
}
