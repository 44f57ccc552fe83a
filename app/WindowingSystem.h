// SPDX-License-Identifier: MIT
#pragma once

/// Chooses the windowing system that the application object will use. To be called on the main thread before
/// that object is made, with the arguments of main. Until qInstallMessageHandler() is called again, a
/// windowing system that does not answer ends the process with status 1 and one line on standard error.
void chooseWindowingSystem(int argc, char **argv);
