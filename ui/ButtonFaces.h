// SPDX-License-Identifier: MIT
#pragma once

class QPushButton;
struct DeviceInfo;

/// The text and the icon of the buttons that offer an update, by what the drive needs.
namespace ButtonFaces {

/// Of the button that a drive's page has at first.
void setUpdateFace(QPushButton *button, const DeviceInfo &device);
/// Of the button that confirms the update.
void setStartFace(QPushButton *button, const DeviceInfo &device);

} // namespace ButtonFaces
