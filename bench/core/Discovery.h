#pragma once

#include "bench/core/Drive.h"
#include "bench/core/DriveRecord.h"

#include <QString>
#include <QVector>

#include <cstdint>

/// What discovery makes of drives; their files are left to Bench.
namespace bench {

/// What discovery reports of each of these drives, plugged in or not. `imageFolder`: where the firmware
/// images lie that decide what is up to date.
QVector<DriveRecord> recordsOf(const QVector<Drive> &drives, const QString &imageFolder);

/// What one query reports: a record for each drive that is plugged in and answers, and a second one where a
/// fault asks for it.
QVector<DriveRecord> recordsOfQuery(const QVector<Drive> &drives, const QString &imageFolder);

/// How long a query of these drives takes beyond the reading of their files.
std::int64_t probeMilliseconds(const QVector<Drive> &drives);

/// True when a query changes the drive: it is counted, or uses up a fault.
bool isChangedByQuery(const Drive &drive);

/// Makes that change.
void countQuery(Drive *drive);

} // namespace bench
