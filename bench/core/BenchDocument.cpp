#include "bench/core/BenchDocument.h"

#include "bench/core/Bytes.h"
#include "bench/core/DriveJson.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/DriveTable.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace bench {

namespace {

constexpr int DocumentVersion = 1;
constexpr std::size_t SectorCount = FlashChip::Size / FlashChip::SectorSize;

/// The chip that a drive has whose flash was written without a fault.
FlashChip expectedChip(const Drive &drive)
{
    FlashChip chip;
    if (!drive.incomplete) {
        chip.load(
            FirmwareImage::forModel(drive.catalogueModel(), drive.flashFirmware, drive.flashConfiguration));
    }
    return chip;
}

std::string sector(const FlashChip &chip, std::size_t number)
{
    return chip.content().substr(number * FlashChip::SectorSize, FlashChip::SectorSize);
}

/// The sectors that are not blank, by number, as hexadecimal digits.
Json chipToJson(const FlashChip &chip)
{
    Json json = Json::object();
    const std::string blank = sector(FlashChip(), 0);
    for (std::size_t i = 0; i < SectorCount; ++i) {
        if (sector(chip, i) != blank) {
            json[std::to_string(i)] = hexadecimal(sector(chip, i));
        }
    }
    return json;
}

FlashChip chipFromJson(const Json &json)
{
    std::vector<std::string> sectors;
    for (std::size_t i = 0; i < SectorCount; ++i) {
        sectors.push_back(std::to_string(i));
    }
    checkMembers(json, sectors, ("is no sector from 0 to " + sectors.back()).c_str());
    std::string content = FlashChip().content();
    for (std::size_t i = 0; i < SectorCount; ++i) {
        readMember(json, sectors[i], [&](const Json &member) {
            const auto bytes = member.is_string() ? bytesFromHexadecimal(member) : std::nullopt;
            require(bytes && bytes->size() == FlashChip::SectorSize,
                "must be " + std::to_string(2 * FlashChip::SectorSize) + " hexadecimal digits");
            content.replace(i * FlashChip::SectorSize, FlashChip::SectorSize, *bytes);
        });
    }
    return FlashChip(content);
}

Json parsed(const std::string &text)
{
    try {
        return Json::parse(text);
    } catch (const Json::parse_error &error) {
        const std::size_t end = std::min(error.byte - 1, text.size());
        const std::string before = text.substr(0, end);
        const auto line = std::count(before.begin(), before.end(), '\n') + 1;
        const std::size_t column = end - (before.rfind('\n') + 1) + 1;
        const std::string what = error.what();
        const std::size_t reason = what.find(": ");
        throw Refused(std::to_string(line) + ':' + std::to_string(column) + ": " + what.substr(reason + 2));
    } catch (const Json::out_of_range &error) { // a number that is too large, which it names
        const std::string what = error.what();
        throw Refused(' ' + what.substr(what.find("] ") + 2));
    }
}

BenchDocument documentFrom(const Json &json)
{
    BenchDocument document;
    checkMembers(json, {"version", "drives", "host", "calls"});
    const auto version = json.find("version");
    const bool isKnown = version != json.end() && *version == DocumentVersion;
    within("version", [&] { require(isKnown, "must be " + std::to_string(DocumentVersion)); });
    std::set<std::string> serials;
    readItems(json, "drives", [&](const Json &item) {
        const Drive drive = driveFromJson(item);
        const bool isNew = serials.insert(drive.serial).second;
        within("serial", [&] { require(isNew, "is that of another drive"); });
        document.drives.emplace_back(drive, expectedChip(drive));
        readMember(
            item, "chip", [&](const Json &chip) { document.drives.back().second = chipFromJson(chip); });
    });
    readMember(json, "host", [&](const Json &host) { document.host = hostFromJson(host); });
    readMember(json, "calls", [&](const Json &calls) {
        const bool areTexts = calls.is_array()
            && std::all_of(calls.begin(), calls.end(), [](const Json &call) { return call.is_string(); });
        require(areTexts, "must be a list of texts");
        document.calls = calls.get<std::vector<std::string>>();
    });
    return document;
}

} // namespace

std::string exportBench(BenchStore &store)
{
    Json json{{"version", DocumentVersion}, {"drives", Json::array()}};
    store.read([&] {
        const DriveTable table(store);
        for (const Drive &drive : table.all()) {
            Json object = toJson(drive);
            const FlashChip chip = table.chip(drive);
            if (chip.content() != expectedChip(drive).content()) {
                object["chip"] = chipToJson(chip);
            }
            json["drives"].push_back(object);
        }
        json["host"] = toJson(Host(store).state());
        json["calls"] = Host(store).calls();
    });
    return printed(json);
}

BenchDocument parseBench(const std::string &text, const std::string &name)
{
    Json json;
    try {
        json = parsed(text);
    } catch (const Refused &refused) {
        throw Refused(name + ':' + refused.what());
    }
    try {
        return documentFrom(json);
    } catch (const Refused &refused) {
        const std::string reason = refused.what();
        throw Refused(name + (reason.front() == '/' ? ": " : ": /: ") + reason);
    }
}

void fillBench(BenchStore &store, const BenchDocument &document)
{
    DriveLifeCycle lifeCycle(store);
    for (const auto &[drive, chip] : document.drives) {
        lifeCycle.restore(drive, chip);
    }
    Host host(store);
    host.change([&document](HostState &state) { state = document.host; });
    for (const std::string &call : document.calls) {
        host.restoreCall(call);
    }
}

} // namespace bench
