// SPDX-License-Identifier: MIT
#pragma once

#include <MacDevice.h>

#include <string>

class Asmedia105X
{
public:
    virtual ~Asmedia105X();
    virtual const char *bridgeName() const = 0;
    virtual bool updateDevice(std::string imagePath);

protected:
    explicit Asmedia105X(const std::string &serialNumber);

private:
    unsigned char registers[96] = {};
    std::string serialNumber;

public:
    MacDevice *macDevice;

private:
    bool verified = false;
};

class Asm1051 : public Asmedia105X
{
public:
    Asm1051(const std::string &serialNumber, bool verify = true);
    const char *bridgeName() const override;
};

class Asm1051E : public Asmedia105X
{
public:
    Asm1051E(const std::string &serialNumber, bool verify = true);
    const char *bridgeName() const override;
};

class Asm1053 : public Asmedia105X
{
public:
    Asm1053(const std::string &serialNumber, bool verify = true);
    const char *bridgeName() const override;

private:
    long eraseBlocks[8] = {};
};
