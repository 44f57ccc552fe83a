#pragma once

#include <array>

namespace bench {

/// Marks a database as that of a bench ("TVRB").
constexpr int ApplicationId = 0x54565242;

/// What makes each version of the schema out of the one before; version 0 is an empty database.
constexpr std::array<const char *, 2> SchemaSteps = {
    R"(
CREATE TABLE drives (
    id INTEGER PRIMARY KEY,
    serial BLOB NOT NULL UNIQUE,
    model BLOB NOT NULL,
    chipset INTEGER NOT NULL,
    plugged INTEGER NOT NULL,
    answers INTEGER NOT NULL,
    reportedSerial BLOB NOT NULL,
    runningFirmware BLOB NOT NULL,
    runningConfiguration BLOB NOT NULL,
    bootRom INTEGER NOT NULL,
    flashFirmware BLOB NOT NULL,
    flashConfiguration BLOB NOT NULL,
    incomplete INTEGER NOT NULL,
    bytesWritten INTEGER NOT NULL,
    bytesToWrite INTEGER NOT NULL,
    mounted INTEGER NOT NULL,
    flashRate INTEGER NOT NULL,
    powerUps INTEGER NOT NULL,
    pluggedAt INTEGER NOT NULL,
    queries INTEGER NOT NULL,
    flashes INTEGER NOT NULL,
    heartbeat INTEGER NOT NULL
) STRICT;
CREATE TABLE faults (
    drive INTEGER NOT NULL REFERENCES drives ON DELETE CASCADE,
    position INTEGER NOT NULL,
    kind TEXT NOT NULL,
    field TEXT NOT NULL,
    number INTEGER NOT NULL,
    text BLOB NOT NULL,
    once INTEGER NOT NULL,
    PRIMARY KEY (drive, position)
) STRICT, WITHOUT ROWID;
CREATE TABLE chips (
    drive INTEGER PRIMARY KEY REFERENCES drives ON DELETE CASCADE,
    content BLOB NOT NULL
) STRICT;
CREATE TABLE host (
    id INTEGER PRIMARY KEY CHECK (id = 1),
    companionInstalled INTEGER NOT NULL,
    serviceSubmitted INTEGER NOT NULL,
    extensionInstalled INTEGER NOT NULL,
    extensionLoaded INTEGER NOT NULL,
    extensionVersion TEXT NOT NULL
) STRICT;
CREATE TABLE processes (
    id INTEGER PRIMARY KEY,
    command TEXT NOT NULL,
    heartbeat INTEGER NOT NULL
) STRICT;
CREATE TABLE calls (
    id INTEGER PRIMARY KEY,
    line TEXT NOT NULL
) STRICT;
)",
    R"(
ALTER TABLE drives ADD COLUMN unpluggedAt INTEGER NOT NULL DEFAULT 0;
ALTER TABLE drives ADD COLUMN lastUpdate TEXT NOT NULL DEFAULT '';
ALTER TABLE drives ADD COLUMN lastUpdateAt INTEGER NOT NULL DEFAULT 0;
)",
};

constexpr int SchemaVersion = static_cast<int>(SchemaSteps.size());

} // namespace bench
