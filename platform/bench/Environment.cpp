#include "bench/core/Bench.h"
#include "bench/core/Files.h"

#include <cstdlib>

namespace {

/// Puts the stand-ins for the host's tools in front of the real ones, for the shell commands that the program
/// runs, and tells them where the bench is. Runs before main.
const bool environmentIsSet = [] {
    ::setenv("TARVO_BENCH", bench::Bench::defaultFolder().toUtf8().constData(), 1);
    const QString tools = bench::executableFolder() + QStringLiteral("/host-tools");
    if (bench::isFolder(tools)) {
        const char *const path = std::getenv("PATH");
        const QByteArray extended = tools.toUtf8() + ':' + (path == nullptr ? "/usr/bin:/bin" : path);
        ::setenv("PATH", extended.constData(), 1);
    }
    return true;
}();

} // namespace
