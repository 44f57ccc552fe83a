// SPDX-License-Identifier: MIT
#include <Asmedia105X.h>

#include "tests/vendor/sdk/Drive.h"

Asmedia105X::Asmedia105X(const std::string &serialNumber)
    : serialNumber(serialNumber), macDevice(new MacDevice("USB", serialNumber))
{
}

Asmedia105X::~Asmedia105X()
{
    delete macDevice;
    recordCall("close " + serialNumber);
}

bool Asmedia105X::updateDevice(std::string imagePath)
{
    recordCall(std::string("flash ") + bridgeName() + ' ' + serialNumber + ' ' + imagePath);
    std::error_code problem;
    verified = registers[95] == 0 && std::filesystem::copy_file(imagePath, drivePath("flash"), problem);
    return verified;
}

Asm1051::Asm1051(const std::string &serialNumber, bool) : Asmedia105X(serialNumber) { }

const char *Asm1051::bridgeName() const
{
    return "1051";
}

Asm1051E::Asm1051E(const std::string &serialNumber, bool) : Asmedia105X(serialNumber) { }

const char *Asm1051E::bridgeName() const
{
    return "1051E";
}

Asm1053::Asm1053(const std::string &serialNumber, bool) : Asmedia105X(serialNumber) { }

const char *Asm1053::bridgeName() const
{
    return eraseBlocks[0] == 0 ? "1053" : "1053, erased";
}
