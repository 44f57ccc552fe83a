#include "platform/Asmedia105X.h"
#include "platform/MacDevice.h"
#include "platform/OxSemiFireWire.h"

#include "devices/DeviceInfo.h"
#include "platform/bench/Bench.h"
#include "platform/bench/Files.h"

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

Asmedia105X::Asmedia105X(std::string serial, int code)
    : macDevice(new MacDevice(serial)), serialNumber(std::move(serial)), chipset(code)
{
}

Asmedia105X::~Asmedia105X()
{
    delete macDevice;
}

bool Asmedia105X::updateDevice(std::string imagePath)
{
    return flash(serialNumber, chipset, imagePath);
}

Asm1051::Asm1051(std::string serial) : Asmedia105X(std::move(serial), Chipset::Asm1051) { }

Asm1051::~Asm1051() = default;

Asm1051E::Asm1051E(std::string serial) : Asmedia105X(std::move(serial), Chipset::Asm1051E) { }

Asm1051E::~Asm1051E() = default;

Asm1053::Asm1053(std::string serial) : Asmedia105X(std::move(serial), Chipset::Asm1053) { }

Asm1053::~Asm1053() = default;

OxSemiFireWire::OxSemiFireWire(std::string serial, int code) : serialNumber(std::move(serial)), chipset(code)
{
}

OxSemiFireWire::~OxSemiFireWire() = default;

bool OxSemiFireWire::updateDevice(std::string imagePath)
{
    return flash(serialNumber, chipset, imagePath);
}

OxSemiFireWire934::OxSemiFireWire934(std::string serial)
    : OxSemiFireWire(std::move(serial), Chipset::OxSemiFireWire934)
{
}

OxSemiFireWire934::~OxSemiFireWire934() = default;

OxSemiFireWire944::OxSemiFireWire944(std::string serial)
    : OxSemiFireWire(std::move(serial), Chipset::OxSemiFireWire944)
{
}

OxSemiFireWire944::~OxSemiFireWire944() = default;

MacDevice::MacDevice(std::string serial) : serialNumber(std::move(serial)) { }

int MacDevice::unmountDisk()
{
    return openBench().unmount(
        QString::fromLatin1(serialNumber.data(), static_cast<int>(serialNumber.size())));
}
