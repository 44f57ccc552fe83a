// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What Linux' services are asked over the system bus, in a library that only an update loads: with Qt D-Bus
/// a list would take a fifth longer. May wait some seconds; main thread.
extern "C" {

/// Has logind keep the machine awake. A descriptor to be closed when it may sleep again; -1, and why.
int inhibitSleep(QString *problem);

/// The charge in percent of the battery that the machine runs on; negative when it runs on mains or UPower
/// does not tell.
double chargeOfBattery();
}
