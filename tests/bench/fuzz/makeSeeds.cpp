// SPDX-License-Identifier: MIT
// Writes the seeds of the fuzz targets into a directory: image, plain and faults.

#include "bench/core/BenchDocument.h"
#include "bench/core/Files.h"
#include "bench/core/Image.h"

#include <cstdio>
#include <exception>
#include <filesystem>

namespace {

/// A document with one drive that has all of these faults.
std::string document(const bench::Faults &faults)
{
    bench::Drive drive = bench::newDrive(bench::models().front());
    drive.serial = drive.reportedSerial = "TV0001PEBBLE";
    drive.faults = faults;
    return bench::Json{{"version", 2}, {"drives", {drive}}, {"host", bench::HostState()}}.dump();
}

void makeSeeds(const std::string &directory)
{
    bench::Faults faults;
    for (const bench::FaultDescription &kind : bench::faultDescriptions()) {
        faults.push_back({kind.kind, kind.example, false});
    }
    std::filesystem::create_directories(directory);
    // The header alone: a checksum that fits is beyond any fuzzer.
    bench::writeFile(
        directory + "/image", bench::imageFile(bench::models().front(), "2.14", "5").substr(0, 100));
    bench::writeFile(directory + "/plain", document({}));
    bench::writeFile(directory + "/faults", document(faults));
}

} // namespace

int main(int argc, char **argv)
{
    try {
        makeSeeds(argc > 1 ? argv[1] : ".");
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
    return 0;
}
