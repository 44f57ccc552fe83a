#pragma once

class QLabel;
class QString;

/// A label for one small line of text, plain or rich. It has no parent; the caller owns it.
QLabel *newTextLine(const QString &text);
