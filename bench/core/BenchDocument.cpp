#include "bench/core/BenchDocument.h"

#include "bench/core/DriveJson.h"
#include "bench/core/DriveLifeCycle.h"
#include "bench/core/DriveTable.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace bench {

namespace {

constexpr int FormatVersion = 1;
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

FlashChip chipFromJson(const Json &json, const std::string &pointer)
{
    std::string content = FlashChip().content();
    if (!json.is_object()) {
        throw Refused(pointer + ": must be an object");
    }
    for (const auto &member : json.items()) {
        const std::string place = pointer + '/' + escaped(member.key());
        const auto number = numberFromText(member.key());
        const bool isPlain = number && std::to_string(*number) == member.key();
        if (!isPlain || *number < 0 || *number >= static_cast<std::int64_t>(SectorCount)) {
            throw Refused(place + ": is no sector from 0 to " + std::to_string(SectorCount - 1));
        }
        const auto bytes = member.value().is_string() ? bytesFromHexadecimal(member.value()) : std::nullopt;
        if (!bytes || bytes->size() != FlashChip::SectorSize) {
            throw Refused(
                place + ": must be " + std::to_string(2 * FlashChip::SectorSize) + " hexadecimal digits");
        }
        content.replace(
            static_cast<std::size_t>(*number) * FlashChip::SectorSize, FlashChip::SectorSize, *bytes);
    }
    return FlashChip(content);
}

Json parsed(const std::string &text)
{
    try {
        return Json::parse(text);
    } catch (const Json::parse_error &error) {
        const std::size_t end = std::min(error.byte == 0 ? 0 : error.byte - 1, text.size());
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

std::vector<std::string> callsFrom(const Json &json)
{
    const bool areTexts = json.is_array()
        && std::all_of(json.begin(), json.end(), [](const Json &call) { return call.is_string(); });
    if (!areTexts) {
        throw Refused("/calls: must be a list of texts");
    }
    return json.get<std::vector<std::string>>();
}

/// No part of the document is copied, since copying one that nests deeply would take more stack than there
/// is.
BenchDocument documentFrom(const Json &json)
{
    BenchDocument document;
    checkMembers(json, "", {"version", "drives", "host", "calls"});
    const Json *const version = findMember(json, "version");
    if (version == nullptr || *version != FormatVersion) {
        throw Refused("/version: must be " + std::to_string(FormatVersion));
    }
    const Json *const drives = findMember(json, "drives");
    if (drives != nullptr && !drives->is_array()) {
        throw Refused("/drives: must be a list");
    }
    std::set<std::string> serials;
    for (std::size_t i = 0; drives != nullptr && i < drives->size(); ++i) {
        const std::string pointer = "/drives/" + std::to_string(i);
        const Drive drive = driveFromJson(drives->at(i), pointer);
        if (!serials.insert(drive.serial).second) {
            throw Refused(pointer + "/serial: is that of another drive");
        }
        const Json *const chip = findMember(drives->at(i), "chip");
        document.drives.emplace_back(
            drive, chip == nullptr ? expectedChip(drive) : chipFromJson(*chip, pointer + "/chip"));
    }
    const Json *const host = findMember(json, "host");
    document.host = host == nullptr ? HostState() : hostFromJson(*host, "/host");
    const Json *const calls = findMember(json, "calls");
    document.calls = calls == nullptr ? std::vector<std::string>() : callsFrom(*calls);
    return document;
}

} // namespace

std::string exportBench(BenchStore &store)
{
    Json json{{"version", FormatVersion}, {"drives", Json::array()}};
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
        throw Refused(name + ": " + refused.what());
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
