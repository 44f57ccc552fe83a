// SPDX-License-Identifier: MIT
#include "app/WindowingSystem.h"

// There is but one.
void chooseWindowingSystem(int, char **) { }
