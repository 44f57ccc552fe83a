// SPDX-License-Identifier: MIT
#include "tests/support/WindowProbe.h"

#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTest>
#include <QWindow>

#include <algorithm>

namespace {

/// The window's visible children of a kind, in reading order.
template <typename Widget>
QList<Widget *> onScreen(const QWidget &window)
{
    QList<Widget *> widgets;
    for (Widget *widget : window.findChildren<Widget *>()) {
        if (widget->isVisibleTo(&window)) {
            widgets.append(widget);
        }
    }
    std::stable_sort(widgets.begin(), widgets.end(), [&window](Widget *left, Widget *right) {
        const QPoint a = left->mapTo(&window, left->rect().center());
        const QPoint b = right->mapTo(&window, right->rect().center());
        return a.y() != b.y() ? a.y() < b.y() : a.x() < b.x();
    });
    return widgets;
}

/// The middle of a widget in its window.
QPoint placeOf(const QWidget &widget)
{
    return widget.mapTo(widget.window(), widget.rect().center());
}

/// True when the widget is what lies in its place in the window; it is scrolled there if need be.
bool isReachable(QWidget &widget)
{
    for (QWidget *parent = widget.parentWidget(); parent != nullptr; parent = parent->parentWidget()) {
        if (auto *area = qobject_cast<QScrollArea *>(parent)) {
            area->ensureWidgetVisible(&widget);
        }
    }
    return widget.window()->childAt(placeOf(widget)) == &widget;
}

} // namespace

QStringList WindowProbe::texts(const QWidget &window)
{
    QStringList texts;
    for (const QLabel *label : onScreen<QLabel>(window)) {
        if (!label->text().isEmpty()) {
            texts.append(label->text());
        }
    }
    return texts;
}

QList<QLabel *> WindowProbe::pictures(const QWidget &window)
{
    QList<QLabel *> pictures;
    for (QLabel *label : onScreen<QLabel>(window)) {
        if (!label->pixmap(Qt::ReturnByValue).isNull()) {
            pictures.append(label);
        }
    }
    return pictures;
}

QStringList WindowProbe::buttons(const QWidget &window)
{
    QStringList texts;
    for (const QPushButton *button : onScreen<QPushButton>(window)) {
        texts.append(button->text());
    }
    return texts;
}

bool WindowProbe::showsBusyBar(const QWidget &window)
{
    const QList<QProgressBar *> bars = onScreen<QProgressBar>(window);
    return bars.size() == 1 && bars.first()->minimum() == 0 && bars.first()->maximum() == 0;
}

QPushButton *WindowProbe::button(const QWidget &window, const QString &text)
{
    for (QPushButton *button : onScreen<QPushButton>(window)) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

bool WindowProbe::click(const QWidget &window, const QString &text)
{
    QPushButton *const target = button(window, text);
    if (target == nullptr) {
        return false;
    }
    return press(*target);
}

bool WindowProbe::press(QWidget &widget)
{
    const QPointer<QWidget> target = &widget;
    // A page that was just put in place is laid out by events that are still waiting.
    if (!QTest::qWaitFor([&target] { return target.isNull() || isReachable(*target); }, 1000)
        || target.isNull()) {
        return false;
    }
    QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, Qt::NoModifier, placeOf(widget));
    return true;
}

QStringList WindowProbe::repeated(int times, const QString &text)
{
    QStringList list;
    while (list.size() < times) {
        list.append(text);
    }
    return list;
}

QWidget *WindowProbe::stackPage(const QWidget &window)
{
    const auto *stack = window.findChild<QStackedWidget *>();
    return stack->count() == 1 ? stack->widget(0) : nullptr;
}
