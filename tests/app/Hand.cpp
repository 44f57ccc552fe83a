// SPDX-License-Identifier: MIT
#include "tests/platform/ScriptedPlatform.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/WindowProbe.h"
#include "ui/MainWindow.h"

#include <QApplication>

#include <functional>
#include <map>

/**
 * Uses the program as a person does, in the program's own process: carries out the steps named in the
 * environment variable HAND, separated by ";", each as soon as it is possible. They are those of Platform
 * below, "close", and the texts of the buttons to be pressed.
 */
class Hand : public QObject
{
public:
    explicit Hand(QObject *parent)
        : QObject(parent), steps(qEnvironmentVariable("HAND").split(';', Qt::SkipEmptyParts))
    {
        // What the platform is like is settled before the program has looked at it.
        while (!steps.isEmpty() && Platform.count(steps.first()) > 0) {
            Platform.at(steps.takeFirst())();
        }
        startTimer(2);
    }

protected:
    void timerEvent(QTimerEvent *) override
    {
        // A click handles events, and so this timer's.
        if (busy || steps.isEmpty()) {
            return;
        }
        busy = true;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *window = qobject_cast<MainWindow *>(widget);
            if (window != nullptr && window->isVisible() && carryOut(steps.first(), *window)) {
                steps.removeFirst();
                break;
            }
        }
        busy = false;
    }

private:
    /// True when the step was possible and is done.
    static bool carryOut(const QString &step, MainWindow &window)
    {
        return step == "close" ? window.close() : WindowProbe::click(window, step);
    }

    /// What the scripted platform does from now on.
    const std::map<QString, std::function<void()>> Platform{
        {"usb", [] { ScriptedPlatform::attach({DeviceRecords::usbDrive()}); }},
        {"firewire", [] { ScriptedPlatform::attach({DeviceRecords::fireWireDrive()}); }},
        {"flash hangs", ScriptedPlatform::holdFlashes},
        {"flash throws", ScriptedPlatform::throwFromFlashes},
        {"query hangs", ScriptedPlatform::holdQueries},
        {"query throws", ScriptedPlatform::throwFromQueries},
    };
    QStringList steps;
    bool busy = false;
};

static void raiseHand()
{
    new Hand(QCoreApplication::instance());
}

Q_COREAPP_STARTUP_FUNCTION(raiseHand)
