// SPDX-License-Identifier: MIT
#include "cli/Progress.h"

#include "cli/CommandLine.h"
#include "cli/Drives.h"

#include <cstdio>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr const char *Erase = "\r\033[K";

/// Columns of the terminal; 80 where it does not tell.
int terminalWidth()
{
    winsize size = {};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : 80;
}

} // namespace

Progress::Progress(bool json) : json(json) { }

Progress::~Progress()
{
    eraseLive();
}

void Progress::tell(
    const QString &event, const DeviceInfo &device, const QString &sentence, QJsonObject details)
{
    if (json) {
        details["schemaVersion"] = 1;
        details["event"] = event;
        details["serialNumber"] = serialNumberOf(device);
        printJson(details, true);
        return;
    }
    eraseLive();
    std::printf("%s: %s\n", qPrintable(serialNumberOf(device)), qPrintable(sentence));
    std::fflush(stdout);
}

int Progress::finish(int exitStatus)
{
    if (json) {
        printJson({{"schemaVersion", 1}, {"event", "done"}, {"exitStatus", exitStatus}}, true);
    }
    return exitStatus;
}

void Progress::warn(const QString &line)
{
    eraseLive();
    refuse(line, Done);
}

void Progress::showLive(qint64 milliseconds, const QString &what)
{
    const QString line = QString("%1 s  %2").arg(milliseconds / 1000).arg(what).left(terminalWidth() - 1);
    if (isLive() && line != live) {
        // Back at its beginning, so that what a library prints meanwhile takes its place.
        std::printf("%s%s\r", Erase, qPrintable(line));
        std::fflush(stdout);
        live = line;
    }
}

bool Progress::isLive() const
{
    const QByteArray terminal = qgetenv("TERM");
    return !json && isatty(STDOUT_FILENO) != 0 && !terminal.isEmpty() && terminal != "dumb";
}

void Progress::eraseLive()
{
    if (!live.isEmpty()) {
        std::printf("%s", Erase);
        std::fflush(stdout);
        live.clear();
    }
}
