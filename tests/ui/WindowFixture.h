// SPDX-License-Identifier: MIT
#pragma once

#include "tests/platform/ScriptedPlatform.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/StandInTools.h"
#include "tests/support/WindowProbe.h"
#include "tests/support/WindowTexts.h"
#include "ui/MainWindow.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QMetaObject>
#include <QTest>
#include <QVector>

/// The scripted platform with its queries held, so that lists reach a window only as a test delivers them.
class HeldPlatform
{
public:
    HeldPlatform()
    {
        ScriptedPlatform::reset();
        ScriptedPlatform::holdQueries();
    }
    ~HeldPlatform() { ScriptedPlatform::reset(); }
    HeldPlatform(const HeldPlatform &) = delete;
    HeldPlatform &operator=(const HeldPlatform &) = delete;
};

/// Arguments as the operating system hands them to the program.
class Arguments
{
public:
    int count = 1;
    char **vector = pointers;

private:
    char program[sizeof "/opt/tarvo/tarvo-firmware-updater"] = "/opt/tarvo/tarvo-firmware-updater";
    char *pointers[2] = {program, nullptr};
};

/// Returns once the discovery thread of the window waits in its first query.
inline void waitForDiscovery()
{
    if (!QTest::qWaitFor([] { return ScriptedPlatform::count("getTarvoDevice") == 1; })) {
        qFatal("the window does not look for drives");
    }
}

/// The real window over a scripted platform and stand-in tools.
class WindowFixture
{
public:
    WindowFixture() { waitForDiscovery(); }
    ~WindowFixture() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    /// Hands the window a list as the discovery thread does, but at once.
    void deliver(const QVector<DeviceInfo> &list)
    {
        QMetaObject::invokeMethod(
            &window, "updateDeviceList", Qt::DirectConnection, Q_ARG(QVector<DeviceInfo>, list));
    }
    /// Hands the window a worker's result, but at once.
    void finish(bool result)
    {
        QMetaObject::invokeMethod(&window, "updateResult", Qt::DirectConnection, Q_ARG(bool, result));
    }
    QWidget *page() const { return WindowProbe::stackPage(window); }
    QStringList texts() const { return WindowProbe::texts(window); }
    QStringList buttons() const { return WindowProbe::buttons(window); }
    bool click(const QString &button) { return WindowProbe::click(window, button); }

    StandInTools tools;
    HeldPlatform platform;
    Arguments arguments;
    MainWindow window{arguments.count, arguments.vector};
};

/// That many drives, numbered from 1 in their serial numbers and model names.
inline QVector<DeviceInfo> numberedDrives(int count)
{
    QVector<DeviceInfo> list;
    for (int number = 1; number <= count; ++number) {
        DeviceInfo drive = DeviceRecords::usbDrive("SN-" + std::to_string(number));
        drive.modelName = "Pebble " + std::to_string(number);
        list.append(drive);
    }
    return list;
}

/// The program's version stands once in the window, at its bottom, in small italics.
inline void verifyVersion(MainWindow &window)
{
    QCOMPARE(WindowProbe::texts(window).count(VersionText), 1);
    for (const QLabel *label : window.findChildren<QLabel *>()) {
        if (label->text() == VersionText) {
            QVERIFY(label->font().italic());
            QCOMPARE(label->font().pixelSize(), 10);
            QCOMPARE(label->height(), 12);
            QVERIFY(label->mapTo(&window, QPoint()).y() > window.height() - 40);
        }
    }
}
