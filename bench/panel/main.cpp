#include "bench/core/Files.h"
#include "bench/panel/PanelWindow.h"

#include <CLI/CLI.hpp>

#include <QApplication>
#include <QScreen>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr std::chrono::milliseconds PollInterval(100);

volatile std::sig_atomic_t stopped = 0;
QString firstWarning;

/// Qt ends the process by a signal where it finds no display, after several warnings. The first says why.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (firstWarning.isEmpty()) {
        firstWarning = message;
    }
    if (type != QtFatalMsg) {
        return;
    }
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        std::fprintf(stderr, "drive-bench-panel: there is no display to open it on; set DISPLAY\n");
    } else {
        std::fprintf(stderr,
            "drive-bench-panel: no window can be opened: %s; set DISPLAY to one that answers\n",
            qPrintable(firstWarning));
    }
    std::_Exit(1);
}

/// Ends the application as if its window were closed, so that no drive stays unplugged that is about to come
/// back.
void quitOnSignals(QTimer *poll)
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        std::signal(signal, [](int) { stopped = 1; });
    }
    QObject::connect(poll, &QTimer::timeout, qApp, [] {
        if (stopped != 0) {
            QCoreApplication::quit();
        }
    });
    poll->start(PollInterval);
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(endWithoutDisplay);
    QApplication application(argc, argv);
    qInstallMessageHandler(nullptr);

    CLI::App app(
        "The drives of a bench in a window: unplug them, plug them in, let them fail.", "drive-bench-panel");
    std::string directory = bench::benchDirectory();
    app.add_option("--bench", directory, "the directory of the bench, instead of $TARVO_BENCH")
        ->type_name("DIR");
    bool isBeside = false;
    app.add_flag("--beside-updater", isBeside,
        "open it right of the updater in the upper left corner of the screen, or below it");
    app.footer("Without --bench and $TARVO_BENCH the bench is in the directory \"bench\" beside the "
               "executable, for an\n"
               "installed package in $XDG_DATA_HOME/tarvo-drive-bench.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &help) {
        return app.exit(help);
    } catch (const CLI::ParseError &error) {
        std::fprintf(stderr, "drive-bench-panel: %s; see: drive-bench-panel --help\n", error.what());
        return 2;
    }

    bench::PanelWindow window(directory, bench::executableDirectory());
    if (isBeside) {
        window.placeBesideUpdater(window.screen()->availableGeometry());
    }
    QTimer poll;
    quitOnSignals(&poll);
    window.show();
    return QApplication::exec();
}
