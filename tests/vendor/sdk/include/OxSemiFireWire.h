// SPDX-License-Identifier: MIT
#pragma once

#include <string>

class OxSemiFireWire
{
public:
    explicit OxSemiFireWire(std::string serialNumber);
    ~OxSemiFireWire();
    bool updateDevice(const std::string &imagePath, int retries = 3);

private:
    int generation = 0;
    std::string serialNumber;
};

class OxSemiFireWire934 : public OxSemiFireWire
{
public:
    using OxSemiFireWire::OxSemiFireWire;
};

class OxSemiFireWire944 : public OxSemiFireWire
{
public:
    using OxSemiFireWire::OxSemiFireWire;
};
