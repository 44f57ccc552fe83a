// Writes the seeds of the fuzz targets: makeSeeds DIRECTORY makes DIRECTORY/image and DIRECTORY/document.

#include "bench/core/DriveJson.h"
#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"
#include "bench/core/SampleBench.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>

namespace {

/// A document with one drive, whose chip is blank.
bench::Json document(const std::vector<bench::Fault> &faults)
{
    bench::Drive drive = bench::newDrive(*bench::findModel("Pebble"));
    drive.serial = drive.reportedSerial = "TV0001PEBBLE";
    drive.incomplete = true;
    drive.faults = faults;
    return {{"version", 1}, {"drives", {bench::toJson(drive)}}, {"host", bench::toJson(bench::HostState())},
        {"calls", {"ls -l"}}};
}

std::vector<bench::Fault> everyFault()
{
    std::vector<bench::Fault> faults;
    for (const bench::FaultDescription &kind : bench::faultDescriptions()) {
        const char *const value = kind.value == bench::FaultValue::Field ? "modelName=x\\xFF" : "1";
        const bool takesNone = kind.value == bench::FaultValue::None;
        faults.push_back(parseFault(kind, takesNone ? std::optional<std::string>() : value));
    }
    return faults;
}

void makeSeeds(const std::string &directory)
{
    bench::FirmwareImage image = bench::FirmwareImage::forModel(*bench::findModel("Pebble"), "2.14", "5");
    image.firmware.resize(300);
    image.configuration.resize(40);
    std::filesystem::create_directories(directory + "/image");
    bench::writeFile(directory + "/image/whole", image.encode());
    bench::writeFile(directory + "/image/header", image.encode().substr(0, 152));

    std::filesystem::create_directories(directory + "/document");
    bench::writeFile(directory + "/document/plain", bench::printed(document({}), false));
    bench::writeFile(directory + "/document/faults", bench::printed(document(everyFault()), false));
    bench::Json withChip = document({});
    withChip["drives"][0]["chip"]["7"] = "00FF";
    bench::writeFile(directory + "/document/chip", bench::printed(withChip, false));
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
