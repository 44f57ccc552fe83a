#include "platform/bench/Report.h"

#include <QSet>

#include <cstdio>
#include <mutex>

namespace bench {

void reportOnce(const QStringList &lines)
{
    // Neither is ever freed: the discovery thread may report while the process ends.
    static auto *const mutex = new std::mutex;
    static auto *const reported = new QSet<QString>;
    const std::lock_guard<std::mutex> guard(*mutex);
    for (const QString &line : lines) {
        if (!reported->contains(line)) {
            reported->insert(line);
            std::fprintf(stderr, "%s\n", line.toUtf8().constData());
        }
    }
}

} // namespace bench
