#include "bench/core/Host.h"

#include "bench/core/Drive.h"
#include "bench/core/Rows.h"
#include "bench/core/ShellQuoting.h"

#include <algorithm>
#include <csignal>

namespace bench {

namespace {

/// A process that was not heard of for so long, in milliseconds, is gone, whoever has its number now.
constexpr std::int64_t ProcessTimeout = 5000;

constexpr std::array<Field<HostState>, 5> HostFields = {{
    {"companionInstalled", &HostState::companionInstalled},
    {"serviceSubmitted", &HostState::serviceSubmitted},
    {"extensionInstalled", &HostState::extensionInstalled},
    {"extensionLoaded", &HostState::extensionLoaded},
    {"extensionVersion", &HostState::extensionVersion, 0, 0, true},
}};

std::vector<Process> livingProcesses(SQLite::Database &database)
{
    std::vector<Process> processes;
    SQLite::Statement row = prepared(database,
        "SELECT id, command FROM processes WHERE heartbeat >= ? ORDER BY id", now() - ProcessTimeout);
    while (row.executeStep()) {
        const std::int64_t id = row.getColumn(0).getInt64();
        if (::kill(static_cast<pid_t>(id), 0) == 0) {
            processes.push_back({id, row.getColumn(1).getString()});
        }
    }
    return processes;
}

HostState readState(SQLite::Database &database)
{
    HostState state;
    SQLite::Statement row(database, "SELECT " + rowNames(HostFields) + " FROM host");
    if (row.executeStep()) {
        readFields(row, HostFields, &state);
    }
    state.processes = livingProcesses(database);
    return state;
}

} // namespace

bool HostState::isRunning(const std::string &command) const
{
    return std::any_of(processes.begin(), processes.end(),
        [&command](const Process &process) { return process.command == command; });
}

const std::array<Field<HostState>, 5> &hostFields()
{
    return HostFields;
}

HostState Host::state() const
{
    return store.read([this] { return readState(store.database()); });
}

void Host::change(const std::function<void(HostState &state)> &work)
{
    store.change([&] {
        HostState state = readState(store.database());
        work(state);
        SQLite::Statement row(store.database(),
            "INSERT OR REPLACE INTO host (" + rowNames(HostFields) + ", id) VALUES ("
                + rowNames(HostFields, ":") + ", 1)");
        bindFields(row, HostFields, state);
        row.exec();
    });
}

bool Host::beat(std::int64_t process)
{
    return store.change(
        [&] {
            const char *const update = "UPDATE processes SET heartbeat = ? WHERE id = ?";
            return execute(store.database(), update, now(), process) == 1;
        },
        Durability::Relaxed);
}

void Host::addProcess(const Process &process)
{
    store.change([&] {
        execute(store.database(), "INSERT OR REPLACE INTO processes VALUES (?, ?, ?)", process.id,
            process.command, now());
    });
}

void Host::removeProcesses()
{
    store.change([this] { execute(store.database(), "DELETE FROM processes"); });
}

void Host::logCall(const std::vector<std::string> &call)
{
    std::string line;
    for (const std::string &argument : call) {
        line += (line.empty() ? "" : " ") + shellQuoted(argument);
    }
    store.change([&] { restoreCall(line); }, Durability::Relaxed);
}

void Host::restoreCall(const std::string &line)
{
    store.change([&] { execute(store.database(), "INSERT INTO calls (line) VALUES (?)", line); });
}

std::vector<std::string> Host::calls() const
{
    return store.read([this] {
        std::vector<std::string> lines;
        SQLite::Statement row(store.database(), "SELECT line FROM calls ORDER BY id");
        while (row.executeStep()) {
            lines.push_back(row.getColumn(0).getString());
        }
        return lines;
    });
}

} // namespace bench
