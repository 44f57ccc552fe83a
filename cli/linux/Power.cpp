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
    const QString library = QCoreApplication::applicationDirPath() + "/tarvo-firmware-power";
    return reinterpret_cast<Function *>(QLibrary::resolve(library, name));
}

} // namespace

struct WakeLock::Held
{
    int descriptor;
};

WakeLock::WakeLock() : held(new Held{-1})
{
    if (auto *inhibit = systemBus<decltype(inhibitSleep)>("inhibitSleep")) {
        held->descriptor = inhibit(&problem);
    } else {
        problem = "the library tarvo-firmware-power does not load";
    }
}

WakeLock::~WakeLock()
{
    if (held->descriptor >= 0) {
        ::close(held->descriptor);
    }
}

std::optional<double> batteryCharge()
{
    auto *charge = systemBus<decltype(chargeOfBattery)>("chargeOfBattery");
    const double percent = charge == nullptr ? -1 : charge();
    return percent < 0 ? std::nullopt : std::optional(percent);
}
