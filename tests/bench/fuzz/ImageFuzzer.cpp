#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// Any bytes are either refused with a line or read into an image that encodes to the same bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string file(reinterpret_cast<const char *>(data), size);
    try {
        if (bench::FirmwareImage::decode(file).encode() != file) {
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
