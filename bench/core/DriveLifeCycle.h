#pragma once

#include "bench/core/BenchStore.h"
#include "bench/core/Drive.h"

#include <functional>
#include <string>
#include <vector>

namespace bench {

class FlashChip;

/**
 * What a person does with the drives of a bench. Each function is one transaction; any thread and process may
 * call. Refused when there is no such drive, or when what is asked for is done already.
 */
class DriveLifeCycle
{
public:
    /// `store` outlives this.
    explicit DriveLifeCycle(BenchStore &store) : store(store) { }

    /// All drives, plugged in or not, by serial number.
    std::vector<Drive> drives() const;
    Drive drive(const std::string &serial) const;

    /// Puts a new drive on the bench, plugged in or not as it says: its flash chip holds `flashFirmware` and
    /// `flashConfiguration`, made up for the drive's model. Everything that a power-up sets is set here.
    void add(const Drive &drive);
    /// Puts a drive on the bench as it is, with this chip.
    void restore(const Drive &drive, const FlashChip &chip);
    /// Takes a drive off the bench for good.
    void remove(const std::string &serial);

    /// The drive then runs what its flash holds.
    void plug(const std::string &serial);
    void unplug(const std::string &serial);

    /// Sets a fault; one of the same kind (and, for a text, of the same field) is replaced.
    void setFault(const std::string &serial, const Fault &fault);
    /// Refused when no such fault is set.
    void clearFault(const std::string &serial, FaultKind kind);
    void clearFaults(const std::string &serial);

private:
    void changeDrive(const std::string &serial, const std::function<void(Drive &drive)> &work);

    BenchStore &store;
};

} // namespace bench
