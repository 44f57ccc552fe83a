// SPDX-License-Identifier: MIT
#include <DeviceDiscovery.h>

#include "bench/core/Discovery.h"
#include "bench/core/Files.h"
#include "bench/core/Refused.h"

#include <cstdio>
#include <mutex>
#include <set>

namespace {

/// Prints a line on standard error the first time that this process has it to say.
void reportOnce(const std::string &line)
{
    // Neither is ever freed: the discovery thread may report while the process ends.
    static auto *const mutex = new std::mutex;
    static auto *const reported = new std::set<std::string>;
    const std::lock_guard<std::mutex> guard(*mutex);
    if (reported->insert(line).second) {
        std::fprintf(stderr, "%s\n", line.c_str());
    }
}

} // namespace

DeviceDiscovery::DeviceDiscovery() = default;

DeviceDiscovery::~DeviceDiscovery() = default;

void DeviceDiscovery::getTarvoDevice(std::vector<DeviceInfo> &devices)
{
    devices.clear();
    try {
        bench::Store store(bench::benchDirectory());
        devices = bench::query(store, bench::executableDirectory());
    } catch (const bench::Refused &refused) {
        reportOnce(refused.what());
    }
}
