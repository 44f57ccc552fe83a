#pragma once

#include "bench/core/BenchStore.h"
#include "bench/core/Table.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// A process that the bench started in the place of one of the companion product's.
struct Process
{
    std::int64_t id; ///< process ID
    std::string command; ///< the program that it stands for, with its path
};

/// What the host computer holds besides drives: a plain value.
struct HostState
{
    bool companionInstalled = false; ///< the service's property list and the applications are in place
    bool serviceSubmitted = false; ///< launchctl knows the service
    bool extensionInstalled = false; ///< the kernel extension is in place
    bool extensionLoaded = false;
    std::string extensionVersion = "1.2.4";
    std::vector<Process> processes; ///< those that are alive

    /// True when a process stands for that program.
    bool isRunning(const std::string &command) const;
};

/// All stored fields of a host but its processes, in the order of the struct.
const std::array<Field<HostState>, 5> &hostFields();

/// The host computer of a bench. Each function is one transaction; any thread and process may call. Throws
/// Refused.
class Host
{
public:
    /// `store` outlives this.
    explicit Host(BenchStore &store) : store(store) { }

    HostState state() const;

    /// Changes what the host holds, but its processes, unless `work` throws.
    void change(const std::function<void(HostState &state)> &work);

    /// Notes that the process is alive; false when it is not, or no longer, listed.
    bool beat(std::int64_t process);
    void addProcess(const Process &process);
    void removeProcesses();

    /// Adds a call of a host tool, with its arguments, to the log as one line, quoted as a shell would need
    /// it.
    void logCall(const std::vector<std::string> &call);
    void restoreCall(const std::string &line);
    /// The calls so far, oldest first.
    std::vector<std::string> calls() const;

private:
    BenchStore &store;
};

} // namespace bench
