// SPDX-License-Identifier: MIT
#include "bench/core/BenchDocument.h"
#include "bench/core/Refused.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// Any bytes are either refused with a line that begins with the name, or read into a bench whose drives come
/// back as they are.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    try {
        const std::string text(reinterpret_cast<const char *>(data), size);
        for (const bench::Drive &drive : bench::parseBench(text, "name").drives) {
            const bench::Json json = drive;
            if (bench::Json(bench::driveFromJson(json)) != json) {
                std::abort();
            }
        }
    } catch (const bench::Refused &refused) {
        const std::string reason = refused.what();
        if (reason.rfind("name:", 0) != 0 || reason.find('\n') != std::string::npos || reason.size() > 300) {
            std::abort();
        }
    }
    return 0;
}
