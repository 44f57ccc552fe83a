// SPDX-License-Identifier: MIT
#pragma once

#include <QSize>

/// Gives the screen of the application that many logical pixels; without a display it would have those of the
/// test's platform plug-in, on which the window does not fit.
void setScreenSize(const QSize &size);
