#include "bench/core/CallLog.h"

#include "bench/core/Files.h"
#include "bench/core/Text.h"

#include <fcntl.h>
#include <unistd.h>

namespace bench {

void logCall(const QString &benchFolder, const QStringList &call)
{
    if (!isFolder(benchFolder + QStringLiteral("/drives"))) {
        return;
    }
    QByteArray line;
    for (const QString &argument : call) {
        line += (line.isEmpty() ? "" : " ") + shellQuoted(argument).toUtf8();
    }
    line += '\n';
    const int file = ::open((benchFolder + QStringLiteral("/calls.log")).toUtf8().constData(),
        O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (file >= 0) {
        // One write appends the line whole, whoever else is writing.
        const ssize_t ignored = ::write(file, line.constData(), static_cast<std::size_t>(line.size()));
        static_cast<void>(ignored);
        ::close(file);
    }
}

} // namespace bench
