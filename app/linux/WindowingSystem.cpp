// SPDX-License-Identifier: MIT
#include "app/WindowingSystem.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

QString firstWarning;

/// Qt ends the process by a signal where no window can be opened, after several warnings. The first says why.
void endWithoutWindow(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (firstWarning.isEmpty()) {
        firstWarning = message;
    }
    if (type == QtFatalMsg) {
        std::fprintf(stderr,
            "tarvo-firmware-updater: no window can be opened: %s; see DISPLAY and QT_QPA_PLATFORM\n",
            qPrintable(firstWarning));
        std::_Exit(1);
    }
}

/// True when an option of Qt's names the windowing system.
bool hasPlatformOption(int argc, char **argv)
{
    return std::any_of(argv, argv + argc,
        [](const std::string &argument) { return argument == "-platform" || argument == "--platform"; });
}

} // namespace

void chooseWindowingSystem(int argc, char **argv)
{
    qInstallMessageHandler(endWithoutWindow);
    if (hasPlatformOption(argc, argv)) {
        return;
    }
    // Never Wayland: for that Qt looks for a further plug-in after the program has emptied the library paths,
    // and the window never appears.
    QStringList choices;
    for (const QString &choice : qEnvironmentVariable("QT_QPA_PLATFORM").split(';')) {
        if (!choice.isEmpty() && !choice.startsWith("wayland")) {
            choices.append(choice);
        }
    }
    if (choices.isEmpty()) {
        choices.append("xcb");
    }
    if (choices.first() == "xcb" && qEnvironmentVariableIsEmpty("DISPLAY")) {
        std::fprintf(stderr, "tarvo-firmware-updater: %s\n",
            qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
                ? "there is no display to open the window on: set DISPLAY"
                : "its window needs X11, and this Wayland session has none: install Xwayland, or set "
                  "DISPLAY");
        std::_Exit(1);
    }
    qputenv("QT_QPA_PLATFORM", choices.join(';').toLocal8Bit());
}
