#pragma once

#include <QStringList>

namespace bench {

/// Prints each line on standard error the first time that this process hands it over. Any thread may call.
void reportOnce(const QStringList &lines);

} // namespace bench
