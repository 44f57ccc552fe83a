// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QLabel;
class QPushButton;
class QWidget;

/// What a person sees of a window, and how they press what they see.
namespace WindowProbe {

/// The texts of the labels on screen, from top to bottom; empty ones left out.
QStringList texts(const QWidget &window);
/// The labels of the pictures on screen, from top to bottom.
QList<QLabel *> pictures(const QWidget &window);
/// The texts of the buttons on screen, from top to bottom and left to right.
QStringList buttons(const QWidget &window);
/// True when a busy bar is on screen.
bool showsBusyBar(const QWidget &window);

/// The button on screen with that text; the first one of several. Null when there is none.
QPushButton *button(const QWidget &window, const QString &text);
/// Presses and releases the left mouse button over it. False when it is not there.
bool click(const QWidget &window, const QString &text);
/// The same for a widget. The click is the windowing system's: it reaches what lies in that place of the
/// window. False when something else lies there.
bool press(QWidget &widget);

/// The text, repeated: what several equal buttons or labels read.
QStringList repeated(int times, const QString &text);

/// The one page of the window's stack.
QWidget *stackPage(const QWidget &window);

} // namespace WindowProbe
