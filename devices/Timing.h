// SPDX-License-Identifier: MIT
#pragma once

/// Seconds that discovery pauses between two passes: a drive that is away for less may not be missed.
constexpr int PauseSeconds = 2;
