// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"
#include "bench/panel/PanelWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QScreen>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>

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
    std::fprintf(stderr, "drive-bench-panel: no window can be opened: %s; see DISPLAY and QT_QPA_PLATFORM\n",
        qPrintable(firstWarning));
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

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "The drives of a bench in a window: unplug them, plug them in, let them fail.");
    const QCommandLineOption directory("bench",
        "The directory of the bench, instead of $TARVO_BENCH. Without either it is the directory "
        "\"bench\" beside the executable, for an installed package "
        "$XDG_DATA_HOME/tarvo-drive-bench.",
        "DIR", QString::fromStdString(bench::benchDirectory()));
    parser.addOption(directory);
    const QCommandLineOption help = parser.addHelpOption();
    const bool isUnderstood = parser.parse(QCoreApplication::arguments());
    if (!isUnderstood || !parser.positionalArguments().isEmpty()) {
        const QString problem = isUnderstood
            ? QString("It takes no argument \"%1\".").arg(parser.positionalArguments().first())
            : parser.errorText();
        std::fprintf(stderr, "drive-bench-panel: %s See: drive-bench-panel --help\n", qPrintable(problem));
        return 2;
    }
    if (parser.isSet(help)) {
        std::printf("%s", qPrintable(parser.helpText()));
        return 0;
    }

    bench::PanelWindow window(parser.value(directory).toStdString(), bench::executableDirectory());
    window.placeBesideUpdater(window.screen()->availableGeometry());
    QTimer poll;
    quitOnSignals(&poll);
    window.show();
    return QApplication::exec();
}
