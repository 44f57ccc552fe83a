// SPDX-License-Identifier: MIT
#pragma once

#include <QPalette>

/// The desktop's palette with a white window; of a dark desktop, whose texts could not be read on white, a
/// palette of light colors. No role of it follows the desktop when that turns dark later.
QPalette lightPalette(const QPalette &desktop);
