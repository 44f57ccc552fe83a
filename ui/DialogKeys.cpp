// SPDX-License-Identifier: MIT
#include "ui/DialogKeys.h"

#include <QPushButton>
#include <QShortcut>
#include <QWidget>

namespace {

/// A key that is held does not act again: the button that it would press next is another one.
QShortcut *newShortcut(Qt::Key key, QWidget *window)
{
    auto *shortcut = new QShortcut(key, window);
    shortcut->setAutoRepeat(false);
    return shortcut;
}

} // namespace

void addDialogKeys(QWidget *window)
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        QObject::connect(newShortcut(key, window), &QShortcut::activated, window, [window] {
            if (auto *button = qobject_cast<QPushButton *>(window->focusWidget())) {
                button->click();
            }
        });
    }
    QObject::connect(newShortcut(Qt::Key_Escape, window), &QShortcut::activated, window, [window] {
        for (QPushButton *button : window->findChildren<QPushButton *>("cancelButton")) {
            if (button->isVisible()) {
                button->click();
                return;
            }
        }
    });
}
