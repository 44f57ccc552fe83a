#include "bench/core/Unmount.h"

#include "bench/core/DriveTable.h"

namespace bench {

Unmount unmount(BenchStore &store, const std::string &reportedSerial)
{
    return store.change([&] {
        Unmount result{0, {}};
        DriveTable table(store);
        std::optional<Drive> drive = table.findReported(reportedSerial);
        if (!drive) {
            return result;
        }
        if (drive->isAttached()) {
            const Fault *const refusal = findFault(drive->faults, FaultKind::UnmountReturns);
            result.value = refusal == nullptr ? 1 : static_cast<int>(refusal->number);
            drive->mounted = drive->mounted && refusal != nullptr;
            useUp(&drive->faults, UsedUpBy::Unmounting);
        }
        if ((result.value & 1) == 0 && drive->lastUpdate == Drive::UpdateSucceeded) {
            result.reason = "the volumes were not unmounted, "
                + (drive->isAttached() ? "the library returned " + std::to_string(result.value)
                                       : "the drive was pulled out");
            drive->setLastUpdate("failed: " + result.reason);
        }
        table.update(*drive);
        return result;
    });
}

} // namespace bench
