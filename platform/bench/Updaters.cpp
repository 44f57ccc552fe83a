#include <Asmedia105X.h>
#include <MacDevice.h>
#include <OxSemiFireWire.h>

#include "bench/core/Bench.h"
#include "bench/core/Files.h"
#include "devices/DeviceInfo.h"

#include <utility>

namespace {

bench::Bench openBench()
{
    return bench::Bench(bench::Bench::defaultFolder(), bench::executableFolder());
}

bool flash(const std::string &serialNumber, int chipset, const std::string &imagePath)
{
    // The libraries answer true or false; why they do is known to nobody outside.
    QString reason;
    return openBench().flash(QString::fromLatin1(serialNumber.data(), static_cast<int>(serialNumber.size())),
        chipset, QString::fromStdString(imagePath), &reason);
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
    return openBench().unmount(
        QString::fromLatin1(volumes->serialNumber.data(), static_cast<int>(volumes->serialNumber.size())));
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
    : Asmedia105X(std::unique_ptr<Session>(new Session{std::move(serialNumber), Chipset::Asm1051}))
{
}

Asm1051::~Asm1051() = default;

Asm1051E::Asm1051E(std::string serialNumber)
    : Asmedia105X(std::unique_ptr<Session>(new Session{std::move(serialNumber), Chipset::Asm1051E}))
{
}

Asm1051E::~Asm1051E() = default;

Asm1053::Asm1053(std::string serialNumber)
    : Asmedia105X(std::unique_ptr<Session>(new Session{std::move(serialNumber), Chipset::Asm1053}))
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
    : OxSemiFireWire(std::unique_ptr<Session>(new Session{std::move(serialNumber), Chipset::OxSemiFireWire934}))
{
}

OxSemiFireWire934::~OxSemiFireWire934() = default;

OxSemiFireWire944::OxSemiFireWire944(std::string serialNumber)
    : OxSemiFireWire(std::unique_ptr<Session>(new Session{std::move(serialNumber), Chipset::OxSemiFireWire944}))
{
}

OxSemiFireWire944::~OxSemiFireWire944() = default;
