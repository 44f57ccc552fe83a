// SPDX-License-Identifier: MIT
#include "cli/Power.h"

#include "cli/linux/SystemBus.h"

#include <QCoreApplication>
#include <QLibrary>

#include <unistd.h>

namespace {

/// A function of SystemBus.h; null where its library is not beside the executable or does not load.
template <typename Function>
Function *systemBus(const char *name)
{
    const QString library = QCoreApplication::applicationDirPath() + "/plugins/tarvo-firmware-power";
    return reinterpret_cast<Function *>(QLibrary::resolve(library, name));
}

} // namespace

WakeLock::WakeLock()
{
    if (auto *inhibit = systemBus<decltype(inhibitSleep)>("inhibitSleep")) {
        held = inhibit(&problem);
    } else {
        problem = "the library tarvo-firmware-power does not load";
    }
}

WakeLock::~WakeLock()
{
    if (held >= 0) {
        ::close(int(held));
    }
}

std::optional<double> batteryCharge()
{
    auto *charge = systemBus<decltype(chargeOfBattery)>("chargeOfBattery");
    const double percent = charge == nullptr ? -1 : charge();
    return percent < 0 ? std::nullopt : std::optional(percent);
}
