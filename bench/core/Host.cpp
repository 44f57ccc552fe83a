#include "bench/core/Host.h"

#include "bench/core/Drive.h"
#include "bench/core/Text.h"

#include <SQLiteCpp/Statement.h>

#include <csignal>

namespace bench {

namespace {

/// A process that was not heard of for so long, in milliseconds, is gone, whoever has its number now.
constexpr std::int64_t HeartbeatTimeout = 5000;

std::vector<Process> livingProcesses(SQLite::Database &database)
{
    std::vector<Process> processes;
    SQLite::Statement row(database, "SELECT id, command FROM processes WHERE heartbeat >= ? ORDER BY id");
    row.bind(1, now() - HeartbeatTimeout);
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
    SQLite::Statement row(database,
        "SELECT companionInstalled, serviceSubmitted, extensionInstalled, extensionLoaded, extensionVersion "
        "FROM host");
    if (row.executeStep()) {
        state.companionInstalled = row.getColumn(0).getInt() != 0;
        state.serviceSubmitted = row.getColumn(1).getInt() != 0;
        state.extensionInstalled = row.getColumn(2).getInt() != 0;
        state.extensionLoaded = row.getColumn(3).getInt() != 0;
        state.extensionVersion = row.getColumn(4).getString();
    }
    state.processes = livingProcesses(database);
    return state;
}

void writeState(SQLite::Database &database, const HostState &state)
{
    SQLite::Statement row(database, "INSERT OR REPLACE INTO host VALUES (1, ?, ?, ?, ?, ?)");
    row.bind(1, state.companionInstalled ? 1 : 0);
    row.bind(2, state.serviceSubmitted ? 1 : 0);
    row.bind(3, state.extensionInstalled ? 1 : 0);
    row.bind(4, state.extensionLoaded ? 1 : 0);
    row.bind(5, state.extensionVersion);
    row.exec();
}

} // namespace

HostState Host::state() const
{
    HostState found;
    store.read([&] { found = readState(store.database()); });
    return found;
}

void Host::change(const std::function<void(HostState &state)> &work)
{
    store.change([&] {
        HostState state = readState(store.database());
        work(state);
        writeState(store.database(), state);
    });
}

bool Host::beat(std::int64_t process)
{
    bool isListed = false;
    store.change(
        [&] {
            SQLite::Statement row(store.database(), "UPDATE processes SET heartbeat = ? WHERE id = ?");
            row.bind(1, now());
            row.bind(2, process);
            isListed = row.exec() == 1;
        },
        Durability::Relaxed);
    return isListed;
}

void Host::addProcess(const Process &process)
{
    store.change([&] {
        SQLite::Statement row(store.database(), "INSERT OR REPLACE INTO processes VALUES (?, ?, ?)");
        row.bind(1, process.id);
        row.bind(2, process.command);
        row.bind(3, now());
        row.exec();
    });
}

void Host::removeProcesses()
{
    store.change([&] { store.database().exec("DELETE FROM processes"); });
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
    store.change([&] {
        SQLite::Statement row(store.database(), "INSERT INTO calls (line) VALUES (?)");
        row.bind(1, line);
        row.exec();
    });
}

std::vector<std::string> Host::calls() const
{
    std::vector<std::string> lines;
    store.read([&] {
        SQLite::Statement row(store.database(), "SELECT line FROM calls ORDER BY id");
        while (row.executeStep()) {
            lines.push_back(row.getColumn(0).getString());
        }
    });
    return lines;
}

} // namespace bench
