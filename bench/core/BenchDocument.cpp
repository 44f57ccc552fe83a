// SPDX-License-Identifier: MIT
#include "bench/core/BenchDocument.h"

#include "bench/core/Refused.h"

#include <algorithm>
#include <set>

namespace bench {

namespace {

constexpr int DocumentVersion = 2;

Json parsed(const std::string &text, const std::string &name)
{
    try {
        return Json::parse(text);
    } catch (const Json::parse_error &error) {
        const std::size_t end = std::min(error.byte - 1, text.size());
        const std::string before = text.substr(0, end);
        const auto line = std::count(before.begin(), before.end(), '\n') + 1;
        const std::size_t column = end - (before.rfind('\n') + 1) + 1;
        const std::string what = error.what();
        throw Refused(name + ':' + std::to_string(line) + ':' + std::to_string(column) + ": "
            + what.substr(what.find(": ") + 2));
    } catch (const Json::out_of_range &error) { // a number that is too large, which it names
        const std::string what = error.what();
        throw Refused(name + ": " + what.substr(what.find("] ") + 2));
    }
}

BenchDocument documentFrom(const Json &json)
{
    const Json pattern{{"version", DocumentVersion}, {"host", HostState()}, {"drives", {Json()}}};
    BenchDocument document;
    checkLike(json, pattern, "");
    require(
        json.value("version", 0) == DocumentVersion, "/version: must be " + std::to_string(DocumentVersion));
    document.host = json.value("host", HostState());
    const Json drives = json.value("drives", Json::array());
    require(drives.size() <= BenchDocument::MaximumDrives,
        "/drives: has " + std::to_string(drives.size()) + " drives; at most "
            + std::to_string(BenchDocument::MaximumDrives) + " fit on a bench");
    std::set<std::string> serials;
    for (std::size_t i = 0; i < drives.size(); ++i) {
        const std::string path = "/drives/" + std::to_string(i);
        document.drives.push_back(driveFromJson(drives[i], path));
        require(
            serials.insert(document.drives.back().serial).second, path + "/serial: is that of another drive");
    }
    return document;
}

} // namespace

Json exportBench(const Store &store)
{
    return store.read([&store] {
        return Json{{"version", DocumentVersion}, {"host", store.host()}, {"drives", store.drives()}};
    });
}

BenchDocument parseBench(const std::string &text, const std::string &name)
{
    require(text.size() <= BenchDocument::MaximumSize,
        name + ": is too large; a bench has at most " + std::to_string(BenchDocument::MaximumSize)
            + " bytes");
    const Json json = parsed(text, name);
    return attempt(name, [&json] { return documentFrom(json); });
}

void fillBench(Store &store, const BenchDocument &document)
{
    store.change([&] {
        store.setHost(document.host);
        for (const Drive &drive : document.drives) {
            store.insert(drive);
        }
    });
}

std::string printed(const Json &json)
{
    return json.dump(4, ' ', true, Json::error_handler_t::replace) + '\n';
}

} // namespace bench
