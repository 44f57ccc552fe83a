// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/DeviceRecords.h"
#include "tests/ui/WindowFixture.h"

#include <QTest>

/// Every look that the window has.
const QStringList Looks{"no drive", "list", "confirmation", "in progress", "restart", "success", "failure"};

/// A row for each look.
inline void addLookRows()
{
    QTest::addColumn<QString>("look");
    for (const QString &look : Looks) {
        QTest::newRow(qPrintable(look)) << look;
    }
}

/// One drive that needs an update, one that needs none, one of unknown status and one that is not supported.
inline QVector<DeviceInfo> mixedDrives()
{
    DeviceInfo upToDate = DeviceRecords::fireWireDrive("B");
    upToDate.firmwareStatus = Status::UpToDate;
    upToDate.configurationStatus = Status::UpToDate;
    DeviceInfo unknown = DeviceRecords::usbDrive("C");
    unknown.firmwareStatus = 7;
    unknown.configurationStatus = 0;
    DeviceInfo notSupported = DeviceRecords::usbDrive("D");
    notSupported.chipsetType = Chipset::NotSupported;
    return {DeviceRecords::usbDrive("A"), upToDate, unknown, notSupported};
}

/// Takes a window that shows no drive to the look; the drive that is updated is called "A". Every drive can
/// be given a name and versions of its own.
inline void bringTo(WindowFixture &fixture, const QString &look, const std::string &modelName = {})
{
    ScriptedPlatform::holdFlashes();
    QVector<DeviceInfo> drives = mixedDrives();
    if (look != "list") {
        drives = {look == "success" ? DeviceRecords::fireWireDrive("A") : DeviceRecords::usbDrive("A")};
    }
    if (!modelName.empty()) {
        for (DeviceInfo &drive : drives) {
            drive.modelName = drive.firmwareVersion = drive.newFirmwareVersion = modelName;
        }
    }
    if (look != "no drive") {
        fixture.deliver(drives);
    }
    if (look != "no drive" && look != "list") {
        fixture.window.updateDevice("A");
    }
    if (look == "in progress" || look == "restart" || look == "success" || look == "failure") {
        fixture.window.startUpdate("A");
    }
    if (look == "restart" || look == "success" || look == "failure") {
        fixture.finish(look != "failure");
    }
    QCoreApplication::processEvents();
}
