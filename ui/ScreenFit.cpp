// SPDX-License-Identifier: MIT
#include "ui/ScreenFit.h"

#include <QEvent>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace {

class ScreenFit : public QObject
{
public:
    explicit ScreenFit(QWidget *window) : QObject(window), window(window)
    {
        window->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject * /*window*/, QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::Show:
            fit();
            break;
        case QEvent::Resize:
            // A spontaneous change of size is a person's.
            if (!event->spontaneous() && window->isVisible()) {
                fit();
            }
            break;
        case QEvent::Move:
        case QEvent::WindowActivate:
            // A window manager gives the window its frame some time after it is shown.
            if (window->windowHandle()->frameMargins() != frameMargins) {
                fit();
            }
            break;
        default:
            break;
        }
        return false;
    }

private:
    void fit()
    {
        frameMargins = window->windowHandle()->frameMargins();
        const QRect available = window->screen()->availableGeometry();
        window->resize(window->size().boundedTo(available.marginsRemoved(frameMargins).size()));
        const QRect frame = window->geometry().marginsAdded(frameMargins);
        QPoint place = frame.topLeft();
        if (frame.right() > available.right()) {
            place.setX(qMax(available.left(), available.right() + 1 - frame.width()));
        }
        if (frame.bottom() > available.bottom()) {
            place.setY(qMax(available.top(), available.bottom() + 1 - frame.height()));
        }
        if (place != frame.topLeft()) {
            window->move(place);
        }
    }

    QWidget *window;
    QMargins frameMargins; ///< those with which it last fitted
};

} // namespace

void fitToScreen(QWidget *window)
{
    new ScreenFit(window);
}
