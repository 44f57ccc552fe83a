#pragma once

#include "bench/core/BenchStore.h"
#include "bench/core/Host.h"

#include <functional>
#include <string>

namespace bench {

/**
 * The companion product on the host of a bench: its installation, and processes that stand for its
 * applications and its service. Any process may call, on any thread. Throws Refused.
 */
class Companion
{
public:
    /// `store` outlives this.
    explicit Companion(BenchStore &store, std::string benchDirectory);

    void install();
    /// Stops it first.
    void uninstall();
    /// Starts its processes: `tool` is the path of the host-tool executable.
    void start(const std::string &tool);
    void stop();

    /// Starts one process in the place of `command` and waits until the host lists it.
    void startProcess(const std::string &tool, const std::string &command);

private:
    void endProcesses(const std::function<void(HostState &host)> &work);

    BenchStore &store;
    const std::string directory;
};

/// Makes the calling process stand for `command` on the bench in that directory: it is listed, and this
/// returns when it was taken off the list. Refused when the bench is gone.
void standFor(const std::string &command, const std::string &benchDirectory);

} // namespace bench
