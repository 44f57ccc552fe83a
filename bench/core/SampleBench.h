#pragma once

#include "bench/core/Drive.h"

#include <QVector>

namespace bench {

/// The six drives of a sample bench: one for each thing that a person can meet.
QVector<Drive> sampleDrives();

} // namespace bench
