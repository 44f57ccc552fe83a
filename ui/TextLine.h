// SPDX-License-Identifier: MIT
#pragma once

class QLabel;
class QString;

/// A label for one small line of text, plain or rich. It has no parent; the caller owns it.
QLabel *newTextLine(const QString &text);
/// Gives the line another text. Both open no file, whatever the markup names.
void setTextLine(QLabel *line, const QString &text);
/// What a person reads of a text, plain or rich.
QString withoutMarkup(const QString &text);
