// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/WindowProbe.h"
#include "tests/ui/WindowFixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>

#include <functional>
#include <memory>

inline void pressOk(QMessageBox &box)
{
    WindowProbe::press(*box.button(QMessageBox::Ok));
}

/// Answers the companion's box as soon as it is open, and keeps what it showed.
class BoxAnswerer : public QObject
{
public:
    explicit BoxAnswerer(std::function<void(QMessageBox &)> answer) : answer(std::move(answer))
    {
        startTimer(1);
    }

    int boxesSeen = 0;

protected:
    void timerEvent(QTimerEvent *) override
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box != nullptr && box->isVisible() && box != lastBox) {
            lastBox = box;
            ++boxesSeen;
            answer(*box);
            // Also after a check in the answer has failed: an open box would hold up the test for ever.
            if (box->isVisible()) {
                pressOk(*box);
            }
        }
    }

private:
    std::function<void(QMessageBox &)> answer;
    QPointer<QMessageBox> lastBox;
};

/// The real window where the companion is installed; the box that it opens while it is constructed is
/// answered.
class WarnedWindow
{
public:
    explicit WarnedWindow(const std::function<void(QMessageBox &)> &answer) : answerer(answer)
    {
        tools.installCompanion();
        window = std::make_unique<MainWindow>(arguments.count, arguments.vector);
        waitForDiscovery();
    }

    StandInTools tools;
    HeldPlatform platform;
    Arguments arguments;
    BoxAnswerer answerer;
    std::unique_ptr<MainWindow> window;
};
