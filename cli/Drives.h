// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QDeadlineTimer>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <vector>

/// The parts that need an update: "firmware", "configuration", both or none.
QStringList outdatedParts(const DeviceInfo &device);

/// How the drive is restarted: "unplug", "power-button", "not-needed" or "not-known".
QString restartName(const DeviceInfo &device);

/// The attached drives; see findSettledDevices().
std::vector<DeviceInfo> attachedDrives(QDeadlineTimer deadline);

/// The drive's serial number as it is printed and as a person gives it. Nothing that a drive sends reaches a
/// terminal or a document but through this function and those below.
QString serialNumberOf(const DeviceInfo &device);

using DeviceText = QString (*)(const DeviceInfo &);
/// A sentence of DeviceTexts, without its marks for bold.
QString plainText(const DeviceInfo &device, DeviceText text);

/// What is known of a drive, but for its serial number.
QJsonObject describe(const DeviceInfo &device);

/// Prints a document on standard output: indented for a person, or on one line.
void printJson(const QJsonObject &document, bool onOneLine = false);
