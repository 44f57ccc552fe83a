// SPDX-License-Identifier: MIT
#pragma once

class QWidget;

/// Gives the window the keys that a dialog has: Enter presses the focused button, Escape the cancel button
/// when there is one.
void addDialogKeys(QWidget *window);
