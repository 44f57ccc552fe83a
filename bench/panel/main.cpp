#include "bench/core/Files.h"
#include "bench/panel/PanelWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QScreen>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {

int quitPipe[2];
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

void requestQuit(int)
{
    [[maybe_unused]] const ssize_t written = ::write(quitPipe[1], "", 1);
}

/// Ends the application as if its window were closed, so that no drive stays unplugged that is about to come
/// back.
void quitOnSignals(QObject *parent)
{
    if (::pipe(quitPipe) != 0) {
        return;
    }
    auto *const notifier = new QSocketNotifier(quitPipe[0], QSocketNotifier::Read, parent);
    QObject::connect(notifier, &QSocketNotifier::activated, parent, [] { QCoreApplication::quit(); });
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        std::signal(signal, requestQuit);
    }
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(endWithoutDisplay);
    QApplication application(argc, argv);
    qInstallMessageHandler(nullptr);
    QCoreApplication::setApplicationName(QStringLiteral("drive-bench-panel"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The drives of a bench in a window: unplug them, plug them in, let them fail."));
    const QCommandLineOption directory(QStringLiteral("bench"),
        QStringLiteral("The bench directory; otherwise $TARVO_BENCH, otherwise bench beside the executable."),
        QStringLiteral("DIR"), QString::fromStdString(bench::benchDirectory()));
    const QCommandLineOption beside(QStringLiteral("beside-updater"),
        QStringLiteral("Open it right of the updater in the upper left corner of the screen, or below it."));
    parser.addOptions({directory, beside});
    const QCommandLineOption help = parser.addHelpOption();
    const bool understood = parser.parse(QCoreApplication::arguments());
    if (!understood || !parser.positionalArguments().isEmpty()) {
        const QString problem = understood
            ? QStringLiteral("it takes no argument \"%1\"").arg(parser.positionalArguments().first())
            : parser.errorText();
        std::fprintf(stderr, "drive-bench-panel: %s; see drive-bench-panel --help\n", qPrintable(problem));
        return 2;
    }
    if (parser.isSet(help)) {
        std::printf("%s", qPrintable(parser.helpText()));
        return 0;
    }

    bench::PanelWindow window(parser.value(directory).toStdString(), bench::executableDirectory());
    if (parser.isSet(beside)) {
        window.placeBesideUpdater(window.screen()->availableGeometry());
    }
    quitOnSignals(&application);
    window.show();
    return QApplication::exec();
}
