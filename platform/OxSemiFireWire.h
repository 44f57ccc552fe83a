// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

/**
 * The maker's updaters for Oxford Semiconductor FireWire bridges.
 *
 * Constructing one opens the drive with the given serial number for flashing, destroying it releases the
 * drive. Used as a local of the update worker, on the worker's thread only.
 */
class OxSemiFireWire
{
public:
    virtual ~OxSemiFireWire();
    OxSemiFireWire(const OxSemiFireWire &) = delete;
    OxSemiFireWire &operator=(const OxSemiFireWire &) = delete;

    /// Writes the image file at `imagePath` (bytes as the file system takes them) into the bridge, however
    /// long that takes. True on success; false when the drive is gone, the image is missing, unreadable or
    /// not for this bridge, or writing failed.
    bool updateDevice(std::string imagePath);

protected:
    struct Session; ///< what the implementation keeps of the opened drive

    explicit OxSemiFireWire(std::unique_ptr<Session> openedSession);

private:
    const std::unique_ptr<Session> session;
};

class OxSemiFireWire934 : public OxSemiFireWire
{
public:
    explicit OxSemiFireWire934(std::string serialNumber);
    ~OxSemiFireWire934() override;
};

class OxSemiFireWire944 : public OxSemiFireWire
{
public:
    explicit OxSemiFireWire944(std::string serialNumber);
    ~OxSemiFireWire944() override;
};
