#include "bench/core/Files.h"
#include "bench/panel/PanelWindow.h"

#include <QApplication>
#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>
#include <cstring>

/// The toolkit ends the process by a signal where it finds none.
static bool hasDisplay([[maybe_unused]] int argc, [[maybe_unused]] char **argv)
{
#ifdef __APPLE__
    return true;
#else
    const bool named = std::any_of(argv, argv + argc,
        [](const char *argument) { return std::strstr(argument, "-platform") != nullptr; });
    return named || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
#endif
}

int main(int argc, char **argv)
{
    if (!hasDisplay(argc, argv)) {
        std::fprintf(stderr, "drive-bench-panel: there is no display to open it on; set DISPLAY\n");
        return 1;
    }
    const QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("drive-bench-panel"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The drives of a bench in a window: unplug them, plug them in, let them fail."));
    parser.addOption({QStringLiteral("bench"),
        QStringLiteral("The bench folder; otherwise $TARVO_BENCH, otherwise bench beside the executable."),
        QStringLiteral("DIR"), bench::Bench::defaultFolder()});
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

    bench::PanelWindow window(bench::Bench(parser.value(QStringLiteral("bench")), bench::executableFolder()));
    window.show();
    return QApplication::exec();
}
