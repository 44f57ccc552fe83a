#pragma once

class QPalette;

/// Dark text on a white page, every role and group of it, so that nothing is left to the desktop's colours.
QPalette lightPalette();
