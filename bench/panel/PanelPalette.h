#pragma once

#include <QColor>

class QPalette;

namespace bench {

/// Text that explains another one.
constexpr QColor SecondaryTextColor(0x50, 0x50, 0x50);
constexpr QColor ProblemTextColor(0xA0, 0x10, 0x10);
constexpr QColor LineColor(0xDD, 0xDD, 0xDD);

/// Dark on white for every role and group, so that nothing is left to the colours of the desktop.
QPalette panelPalette();

} // namespace bench
