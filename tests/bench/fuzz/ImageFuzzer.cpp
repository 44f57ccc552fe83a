#include "bench/core/FirmwareImage.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// Any bytes are either refused with a reason or read into an image that encodes to the same bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray file(reinterpret_cast<const char *>(data), static_cast<int>(size));
    bench::FirmwareImage image;
    QString reason;
    if (bench::FirmwareImage::decode(file, &image, &reason)) {
        if (image.encode() != file) {
            std::abort();
        }
    } else if (reason.isEmpty() || !image.firmware.isEmpty()) {
        std::abort();
    }
    return 0;
}
