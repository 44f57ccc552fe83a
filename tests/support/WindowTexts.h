// SPDX-License-Identifier: MIT
#pragma once

#include "Version.h"

#include <QString>

/// Texts and pictures of the window that several tests look for. The lines are those of
/// DeviceRecords::usbDrive().

const QString NoDriveText =
    "<b>No compatible Tarvo device were found.</b><br/><br/><b>Please plug a compatible Tarvo device.</b>";
const QString VersionText = QString("Orvi: ") + TarvoVersion;
const QString SuccessLine = "Your Tarvo <b>Pebble</b> has been successfully updated.";
const QString FailureLine = "Error while updating your Tarvo <b>Pebble</b> device. Please retry.";

const QString OkPicture = ":/firmwareUpdater/Ok.png";
const QString UpdatePicture = ":/firmwareUpdater/Update.png";
const QString WarningPicture = ":/firmwareUpdater/Warning.png";
