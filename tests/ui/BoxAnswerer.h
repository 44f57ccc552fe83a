#pragma once

#include "tests/support/WindowProbe.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>

#include <functional>

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
