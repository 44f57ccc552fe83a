// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"
#include "bench/core/Image.h"
#include "bench/core/Refused.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <unistd.h>

/// Any bytes are either refused with a line or read into a header that is within its limits.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const std::string path = "/dev/shm/image-fuzzer-" + std::to_string(::getpid());
    try {
        bench::writeFile(path, std::string(reinterpret_cast<const char *>(data), size));
        const bench::Image image = bench::readImage(path);
        if (image.length <= 0 || std::size_t(image.length) >= size || image.firmware.empty()) {
            std::abort();
        }
    } catch (const bench::Refused &refused) {
        const std::string reason = refused.what();
        if (reason.empty() || reason.find('\n') != std::string::npos) {
            std::abort();
        }
    }
    return 0;
}
