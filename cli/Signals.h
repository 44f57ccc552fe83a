// SPDX-License-Identifier: MIT
#pragma once

/// From now on Ctrl-C, SIGTERM and a lost terminal do not end the process but are remembered, and what stops
/// it or tells it of a closed pipe has no effect.
void holdSignals();

/// True when the process has been asked to end since then. Any thread may call.
bool isEndRequested();
