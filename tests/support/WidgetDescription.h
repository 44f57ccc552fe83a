// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QLayout;
class QWidget;

/// How widgets are laid out and set up, in words that a test can compare.
namespace WidgetDescription {

/// One line for each item, from top to bottom or left to right; the items of a nested layout are indented.
/// Margins, spacing, alignments and stretch factors are named where they are not the default.
QStringList linesOf(const QLayout &layout);

/// The names of the properties in which the widget is not set up like the reference. Left out: where it
/// stands, whether it is on screen, its picture, and what serves the keyboard and screen readers.
QString differences(const QWidget &widget, const QWidget &reference);

} // namespace WidgetDescription
