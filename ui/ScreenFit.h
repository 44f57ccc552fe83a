// SPDX-License-Identifier: MIT
#pragma once

class QWidget;

/// Keeps the window within its screen whenever the program gives it a size: it is moved up or to the left,
/// and is made smaller only where that is not enough. What a person does to the window stays as it is.
void fitToScreen(QWidget *window);
