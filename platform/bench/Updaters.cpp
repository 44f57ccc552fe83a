// SPDX-License-Identifier: MIT
#include <Asmedia105X.h>
#include <MacDevice.h>
#include <OxSemiFireWire.h>

#include "bench/core/Files.h"
#include "bench/core/Flash.h"
#include "bench/core/LifeCycle.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <cstdio>
#include <utility>

namespace {

/// The libraries answer true or false, and the page says no more; this is for the person at the bench.
void report(const std::string &serialNumber, const std::string &reason)
{
    std::fprintf(stderr, "the update of %s failed: %s\n",
        bench::escaped(bench::textFromBytes(serialNumber)).c_str(), reason.c_str());
}

/// The last flash of this thread has failed, which was reported then. An updater is used on one thread only.
thread_local bool hasFlashFailed = false;

bool flash(const std::string &serialNumber, int chipset, const std::string &imagePath)
{
    hasFlashFailed = false;
    try {
        bench::Store store(bench::benchDirectory());
        bench::Flash(store).run(bench::textFromBytes(serialNumber), chipset, imagePath);
    } catch (const bench::Refused &refused) {
        report(serialNumber, refused.what());
        hasFlashFailed = true;
    }
    return !hasFlashFailed;
}

/// Unmounts the volumes, also after a failed flash; an update that fails only now is reported.
int unmount(const std::string &serialNumber)
{
    bench::Unmount result{0, {}};
    try {
        bench::Store store(bench::benchDirectory());
        result = bench::unmountDrive(store, bench::textFromBytes(serialNumber));
    } catch (const bench::Refused &refused) {
        result.reason = refused.what();
    }
    if (!result.reason.empty() && !hasFlashFailed) {
        report(serialNumber, result.reason);
    }
    return result.value;
}

} // namespace

struct MacDevice::Volumes
{
    std::string serialNumber;
};

MacDevice::MacDevice(std::string serialNumber) : volumes(new Volumes{std::move(serialNumber)}) { }

MacDevice::~MacDevice() = default;

int MacDevice::unmountDisk()
{
    return unmount(volumes->serialNumber);
}

struct Asmedia105X::Session
{
    std::string serialNumber;
    int chipset;
};

Asmedia105X::Asmedia105X(std::unique_ptr<Session> openedSession)
    : macDevice(new MacDevice(openedSession->serialNumber)), session(std::move(openedSession))
{
}

Asmedia105X::~Asmedia105X()
{
    delete macDevice;
}

bool Asmedia105X::updateDevice(std::string imagePath)
{
    return flash(session->serialNumber, session->chipset, imagePath);
}

Asm1051::Asm1051(std::string serialNumber)
    : Asmedia105X(std::make_unique<Session>(Session{std::move(serialNumber), Chipset::Asm1051}))
{
}

Asm1051::~Asm1051() = default;

Asm1051E::Asm1051E(std::string serialNumber)
    : Asmedia105X(std::make_unique<Session>(Session{std::move(serialNumber), Chipset::Asm1051E}))
{
}

Asm1051E::~Asm1051E() = default;

Asm1053::Asm1053(std::string serialNumber)
    : Asmedia105X(std::make_unique<Session>(Session{std::move(serialNumber), Chipset::Asm1053}))
{
}

Asm1053::~Asm1053() = default;

struct OxSemiFireWire::Session
{
    std::string serialNumber;
    int chipset;
};

OxSemiFireWire::OxSemiFireWire(std::unique_ptr<Session> openedSession) : session(std::move(openedSession)) { }

OxSemiFireWire::~OxSemiFireWire() = default;

bool OxSemiFireWire::updateDevice(std::string imagePath)
{
    return flash(session->serialNumber, session->chipset, imagePath);
}

OxSemiFireWire934::OxSemiFireWire934(std::string serialNumber)
    : OxSemiFireWire(std::make_unique<Session>(Session{std::move(serialNumber), Chipset::OxSemiFireWire934}))
{
}

OxSemiFireWire934::~OxSemiFireWire934() = default;

OxSemiFireWire944::OxSemiFireWire944(std::string serialNumber)
    : OxSemiFireWire(std::make_unique<Session>(Session{std::move(serialNumber), Chipset::OxSemiFireWire944}))
{
}

OxSemiFireWire944::~OxSemiFireWire944() = default;
