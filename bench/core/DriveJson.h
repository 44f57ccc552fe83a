#pragma once

#include "bench/core/Drive.h"
#include "bench/core/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// JSON whose members keep their order. In its texts a character U+0000 to U+00FF stands for each byte of a
/// drive's.
using Json = nlohmann::ordered_json;

Json toJson(const Drive &drive);
Json toJson(const HostState &host);
Json toJson(const DeviceInfo &record);

/// The reverse of toJson(). Members that are missing have the value that a new drive of the model has.
/// Refused with the JSON pointer of what is malformed, and why: "/faults/1/value: must be a text". No part of
/// the JSON is copied, since copying one that nests deeply would take more stack than there is.
Drive driveFromJson(const Json &json);
HostState hostFromJson(const Json &json);

/// Runs `work` on a part of a document, and puts the part's name in front of the pointer in what it refuses.
void within(const std::string &part, const std::function<void()> &work);

/// Calls `read` with the member of that name, where the object has one.
void readMember(
    const Json &object, const std::string &name, const std::function<void(const Json &member)> &read);

/// Calls `read` with each item of the list that is the member of that name, where the object has one.
void readItems(
    const Json &object, const std::string &name, const std::function<void(const Json &item)> &read);

/// Refused unless the value is an object with just members of these names, otherwise with the reason.
void checkMembers(
    const Json &json, const std::vector<std::string> &names, const char *reason = "is not a known member");

/// The JSON on one line, or indented on many; bytes that are no UTF-8 are replaced.
std::string printed(const Json &json, bool isIndented = true);

} // namespace bench
