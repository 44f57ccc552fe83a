#pragma once

#include <QString>
#include <QStringList>

namespace bench {

/// Appends a call with its arguments to calls.log in the bench folder as one line, quoted as a shell would
/// need it. A folder that is no bench, or cannot be written, is left alone.
void logCall(const QString &benchFolder, const QStringList &call);

} // namespace bench
