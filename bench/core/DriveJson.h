#pragma once

#include "bench/core/Drive.h"
#include "bench/core/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace bench {

/// JSON whose members keep their order. In its texts a character U+0000 to U+00FF stands for each byte of a
/// drive's.
using Json = nlohmann::ordered_json;

Json toJson(const Drive &drive);
Json toJson(const HostState &host);
Json toJson(const DeviceInfo &record);

/// The reverse of toJson(). Members that are missing have the value that a new drive of the model has;
/// `pointer` is the JSON pointer of the object. Refused with the pointer of what is malformed, and why.
Drive driveFromJson(const Json &json, const std::string &pointer);
HostState hostFromJson(const Json &json, const std::string &pointer);

/// Refused unless the value is an object with just members of these names.
void checkMembers(const Json &json, const std::string &pointer, const std::vector<std::string> &names);

/// The member of an object; null when it has none of that name.
const Json *findMember(const Json &object, const char *name);

/// The JSON on one line, or indented on many; bytes that are no UTF-8 are replaced.
std::string printed(const Json &json, bool isIndented = true);

} // namespace bench
