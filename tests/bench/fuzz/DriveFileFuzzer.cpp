#include "bench/core/Drive.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// Any bytes are either refused with "line:column: reason" or read into a drive that comes back as it is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray file(reinterpret_cast<const char *>(data), static_cast<int>(size));
    bench::Drive drive;
    QString problem;
    if (bench::Drive::decode(file, &drive, &problem)) {
        bench::Drive again;
        if (!bench::Drive::decode(drive.encode(), &again, &problem) || !(again == drive)) {
            std::abort();
        }
    } else if (!problem.contains(QLatin1String(": ")) || !drive.serial.isEmpty()) {
        std::abort();
    }
    return 0;
}
