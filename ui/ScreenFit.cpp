#include "ui/ScreenFit.h"

#include <QEvent>
#include <QScreen>
#include <QWidget>

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
        // A spontaneous change of size is a person's.
        const bool resized = event->type() == QEvent::Resize && !event->spontaneous() && window->isVisible();
        if (resized || event->type() == QEvent::Show) {
            fit();
        }
        return false;
    }

private:
    void fit()
    {
        const QRect available = window->screen()->availableGeometry();
        const QSize borders = window->frameGeometry().size() - window->size();
        window->resize(window->size().boundedTo(available.size() - borders));
        const QRect frame = window->frameGeometry();
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
};

} // namespace

void fitToScreen(QWidget *window)
{
    new ScreenFit(window);
}
