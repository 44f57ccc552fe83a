// SPDX-License-Identifier: MIT
#include "ui/PageState.h"

#include "ui/TextLine.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

namespace {

/// The cancel button, so that pressing the space bar twice starts no update; without one, the first button.
QWidget *firstButton(const QWidget &part)
{
    QWidget *first = nullptr;
    for (QPushButton *button : part.findChildren<QPushButton *>()) {
        if (button->isVisibleTo(&part) && button->objectName() == "cancelButton") {
            return button;
        }
        if (button->isVisibleTo(&part) && first == nullptr) {
            first = button;
        }
    }
    return first;
}

void showDrive(QScrollArea *area, QWidget *button)
{
    area->ensureWidgetVisible(button->parentWidget(), 0, 0);
    // Where the window is too small for the whole drive.
    area->ensureWidgetVisible(button, 0, 0);
}

/// Qt has Windows speak the alert, and tells a screen reader elsewhere of the change of name.
void announce(QScrollArea *area)
{
    for (const QAccessible::Event type : {QAccessible::NameChanged, QAccessible::Alert}) {
        QAccessibleEvent event(area, type);
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace

PageState::PageState(const QWidget &page)
{
    const auto *area = page.findChild<QScrollArea *>();
    if (area == nullptr) {
        return;
    }
    look = area->accessibleName();
    scrollPosition = {area->horizontalScrollBar()->value(), area->verticalScrollBar()->value()};
    areaHasFocus = page.focusWidget() == area;
    if (const auto *focused = qobject_cast<QPushButton *>(page.focusWidget())) {
        button = focused->objectName();
        drive = focused->parentWidget()->objectName();
        driveIndex = int(page.findChildren<QWidget *>(drive).indexOf(focused->parentWidget()));
    }
}

void PageState::moveFocusTo(const QWidget &page) const
{
    auto *area = page.findChild<QScrollArea *>();
    QWidget *target = sameWidget(page, area);
    const QWidget *sameDrive = driveOn(page);
    if (target == nullptr && sameDrive != nullptr) {
        target = firstButton(*sameDrive);
    }
    if (target == nullptr) {
        target = firstButton(page);
    }
    if (target == nullptr) {
        target = area;
    }
    target->setFocus();
}

void PageState::scrollAndAnnounce(const QWidget &page) const
{
    auto *area = page.findChild<QScrollArea *>();
    area->horizontalScrollBar()->setValue(scrollPosition.x());
    area->verticalScrollBar()->setValue(scrollPosition.y());
    QWidget *focused = page.focusWidget();
    if (focused != area && focused != sameWidget(page, area)) {
        showDrive(area, focused);
    }
    if (area->accessibleName() != look) {
        announce(area);
    }
}

/// What the focus was on, as the new page has it; null when it does not.
QWidget *PageState::sameWidget(const QWidget &page, QScrollArea *area) const
{
    if (areaHasFocus && area->accessibleName() == look) {
        return area;
    }
    const QWidget *sameDrive = driveOn(page);
    auto *same = sameDrive != nullptr ? sameDrive->findChild<QPushButton *>(button) : nullptr;
    return same != nullptr && same->isVisibleTo(&page) ? same : nullptr;
}

/// The drive whose button had the focus, as the new page has it; null when it does not.
QWidget *PageState::driveOn(const QWidget &page) const
{
    const QList<QWidget *> drives =
        button.isEmpty() ? QList<QWidget *>() : page.findChildren<QWidget *>(drive);
    return driveIndex < drives.size() ? drives[driveIndex] : nullptr;
}

void describeLook(QScrollArea *area)
{
    const QWidget *container = area->widget();
    QStringList texts;
    for (const QLabel *label : container->findChildren<QLabel *>()) {
        if (label->isVisibleTo(container) && !label->text().isEmpty()) {
            texts.append(withoutMarkup(label->text()).simplified());
        }
    }
    area->setAccessibleName(texts.join(' '));
    for (QPushButton *button : container->findChildren<QPushButton *>()) {
        button->setAccessibleDescription(button->accessibleDescription() + ". " + texts.join(' '));
    }
}

void takeFocusToScroll(QScrollArea *area)
{
    const auto setPolicy = [area] {
        const bool scrolls =
            area->horizontalScrollBar()->maximum() > 0 || area->verticalScrollBar()->maximum() > 0;
        area->setFocusPolicy(scrolls ? Qt::StrongFocus : Qt::NoFocus);
    };
    setPolicy();
    for (const QScrollBar *bar : {area->horizontalScrollBar(), area->verticalScrollBar()}) {
        QObject::connect(bar, &QScrollBar::rangeChanged, area, setPolicy);
    }
}

void followFocus(QScrollArea *area)
{
    QObject::connect(qApp, &QApplication::focusChanged, area, [area](QWidget *from, QWidget *to) {
        // Not when the window comes to the front, and not under the mouse, which presses what it points at.
        const bool byKeyboard = from != nullptr && QApplication::mouseButtons() == Qt::NoButton;
        if (byKeyboard && qobject_cast<QPushButton *>(to) != nullptr && area->isAncestorOf(to)) {
            showDrive(area, to);
        }
    });
}
