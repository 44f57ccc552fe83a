#include "bench/core/BenchDocument.h"
#include "bench/core/DriveJson.h"
#include "bench/core/Refused.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

/// A drive that was read can be stored, and comes back as it is.
void compare(const bench::Drive &drive)
{
    check(drive);
    const bench::Json json = bench::toJson(drive);
    if (bench::toJson(bench::driveFromJson(json)) != json) {
        std::abort();
    }
}

} // namespace

/// Any bytes are either refused with a line that begins with the name, or read into a bench.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    bench::BenchDocument document;
    try {
        document = bench::parseBench(text, "name");
    } catch (const bench::Refused &refused) {
        const std::string reason = refused.what();
        if (reason.rfind("name:", 0) != 0 || reason.find('\n') != std::string::npos) {
            std::abort();
        }
        return 0;
    }
    for (const auto &[drive, chip] : document.drives) {
        compare(drive);
        if (chip.content().size() != bench::FlashChip::Size) {
            std::abort();
        }
    }
    return 0;
}
