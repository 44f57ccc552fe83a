// SPDX-License-Identifier: MIT
#include "bench/core/Host.h"

#include "bench/core/Refused.h"
#include "bench/core/Text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

bool isCompanionInstalled(const Store &store)
{
    return store.read([&store] { return store.host().companionInstalled; });
}

void setCompanionInstalled(Store &store, bool isInstalled)
{
    store.change([&] {
        HostState host = store.host();
        require(host.companionInstalled != isInstalled,
            isInstalled
                ? "the companion is installed already; to remove it, use: drive-bench companion uninstall"
                : "the companion is not installed; to install it, use: drive-bench companion install");
        host.companionInstalled = isInstalled;
        store.setHost(host);
    });
}

void logCall(const std::string &benchDirectory, const std::vector<std::string> &words)
{
    std::string line;
    for (const std::string &word : words) {
        line += (line.empty() ? "" : " ") + shellQuoted(word);
    }
    line += '\n';
    const std::string file = benchDirectory + "/calls.log";
    const int flags = O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const int descriptor = ::open(file.c_str(), flags, 0666);
    struct stat status = {};
    if (descriptor >= 0 && ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        static_cast<void>(::write(descriptor, line.data(), line.size()));
    }
    ::close(descriptor);
}

} // namespace bench
