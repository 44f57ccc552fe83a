#pragma once

#include <QString>

namespace bench {

/// A text with any bytes in it, as one line for a person: control characters, characters above U+007E and
/// backslashes are written as \xNN.
QString escaped(const QString &text);

/// The reverse of escaped(); other characters stay as they are. False for a backslash that begins no \xNN or
/// for a character above U+00FF.
bool unescape(const QString &text, QString *plain);

/// The text as a word of a shell's command line: quoted where it holds more than plain letters.
QString shellQuoted(const QString &text);

} // namespace bench
