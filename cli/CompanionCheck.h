// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

/// Whether the companion product is installed; nothing where that cannot be found out, because the check has
/// no directory in which it can write. Works in a private directory, which it removes, and comes back to the
/// working directory. Called on the main thread before any other is started: it holds signals back meanwhile.
std::optional<bool> isCompanionInstalled();
