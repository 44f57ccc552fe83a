// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

/**
 * The maker's device library: an attached USB drive as the operating system sees it.
 *
 * Made by an ASMedia updater for its drive and used on the update worker's thread only.
 */
class MacDevice
{
public:
    /// `serialNumber`: the drive's serial number, bytes as discovery reported them.
    explicit MacDevice(std::string serialNumber);
    ~MacDevice();
    MacDevice(const MacDevice &) = delete;
    MacDevice &operator=(const MacDevice &) = delete;

    /// Unmounts the drive's volumes. Returns nonzero on success, 0 when a volume is in use or the drive
    /// is gone. An update counts as successful only when bit 0 of the value is set.
    int unmountDisk();

private:
    struct Volumes; ///< what the implementation keeps of the drive

    const std::unique_ptr<Volumes> volumes;
};
