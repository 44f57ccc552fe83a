// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

class MacDevice;

/**
 * The maker's updaters for ASMedia USB bridges.
 *
 * Constructing one opens the drive with the given serial number for flashing, destroying it releases the
 * drive. Used as a local of the update worker, on the worker's thread only.
 */
class Asmedia105X
{
public:
    Asmedia105X(const Asmedia105X &) = delete;
    Asmedia105X &operator=(const Asmedia105X &) = delete;

    /// Writes the image file at `imagePath` (bytes as the file system takes them) into the bridge, however
    /// long that takes. True on success; false when the drive is gone, the image is missing, unreadable or
    /// not for this bridge, or writing failed.
    bool updateDevice(std::string imagePath);

    /// The drive as the operating system sees it; owned by the updater, never null.
    MacDevice *macDevice;

protected:
    struct Session; ///< what the implementation keeps of the opened drive

    explicit Asmedia105X(std::unique_ptr<Session> openedSession);
    ~Asmedia105X();

private:
    const std::unique_ptr<Session> session;
};

class Asm1051 : public Asmedia105X
{
public:
    explicit Asm1051(std::string serialNumber);
    ~Asm1051();
};

class Asm1051E : public Asmedia105X
{
public:
    explicit Asm1051E(std::string serialNumber);
    ~Asm1051E();
};

class Asm1053 : public Asmedia105X
{
public:
    explicit Asm1053(std::string serialNumber);
    ~Asm1053();
};
