#include "tests/platform/ScriptedPlatform.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/WindowProbe.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QFile>
#include <QImageReader>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <cstdio>

/**
 * Uses the program as a person does, in the program's own process: carries out the steps named in the
 * environment variable HAND, separated by ";", each as soon as it is possible. Says on standard output which
 * steps it has done and what it is asked to print.
 *
 *     attach usb|firewire|none   what the scripted platform finds from now on
 *     flash fails|hangs|throws   what the scripted platform does with a flash
 *     query hangs|throws         what it does when discovery asks it
 *     click TEXT                 press the button
 *     see TEXT                   wait until a line on screen holds the text
 *     ok                         press the message box's button
 *     close                      close the window
 *     print WHAT                 formats, plug-ins
 */
class Hand : public QObject
{
public:
    explicit Hand(QObject *parent)
        : QObject(parent), steps(qEnvironmentVariable("HAND").split(';', Qt::SkipEmptyParts))
    {
        // What the platform is like is settled before the program has looked at it.
        while (!steps.isEmpty() && setUpPlatform(steps.first())) {
            finishStep();
        }
        startTimer(2);
    }

protected:
    void timerEvent(QTimerEvent *) override
    {
        if (!steps.isEmpty() && carryOut(steps.first())) {
            finishStep();
        }
    }

private:
    static MainWindow *window()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *mainWindow = qobject_cast<MainWindow *>(widget)) {
                return mainWindow->isVisible() ? mainWindow : nullptr;
            }
        }
        return nullptr;
    }

    static void print(const QString &line)
    {
        std::printf("%s\n", qPrintable(line));
        std::fflush(stdout);
    }

    void finishStep() { print("done: " + steps.takeFirst()); }

    static bool setUpPlatform(const QString &step)
    {
        if (step == "attach usb") {
            ScriptedPlatform::attach({DeviceRecords::usbDrive()});
        } else if (step == "attach firewire") {
            ScriptedPlatform::attach({DeviceRecords::fireWireDrive()});
        } else if (step == "attach none") {
            ScriptedPlatform::attach({});
        } else if (step == "flash fails") {
            ScriptedPlatform::setFlashResult(false);
        } else if (step == "flash hangs") {
            ScriptedPlatform::holdFlashes();
        } else if (step == "flash throws") {
            ScriptedPlatform::throwFromFlashes();
        } else if (step == "query hangs") {
            ScriptedPlatform::holdQueries();
        } else if (step == "query throws") {
            ScriptedPlatform::throwFromQueries();
        } else {
            return false;
        }
        return true;
    }

    /// True when the step was possible and is done.
    static bool carryOut(const QString &step)
    {
        if (setUpPlatform(step)) {
            return true;
        }
        if (step == "ok") {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (box == nullptr || !box->isVisible()) {
                return false;
            }
            print("box: " + box->text());
            QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
            return true;
        }
        MainWindow *const mainWindow = window();
        if (mainWindow == nullptr) {
            return false;
        }
        const QString argument = step.section(' ', 1);
        if (step.startsWith("click ")) {
            return WindowProbe::click(*mainWindow, argument);
        }
        if (step.startsWith("see ")) {
            return !WindowProbe::texts(*mainWindow).filter(argument).isEmpty();
        }
        if (step == "close") {
            mainWindow->close();
        } else if (step == "print formats") {
            print("formats: " + QImageReader::supportedImageFormats().join('|'));
        } else if (step == "print plug-ins") {
            QFile maps("/proc/self/maps");
            print("plug-ins: "
                + QString::number(
                    maps.open(QIODevice::ReadOnly) ? maps.readAll().count("/imageformats/") : -1));
        } else {
            qFatal("the hand does not know how to %s", qPrintable(step));
        }
        return true;
    }

    QStringList steps;
};

static void raiseHand()
{
    new Hand(QCoreApplication::instance());
}

Q_COREAPP_STARTUP_FUNCTION(raiseHand)
