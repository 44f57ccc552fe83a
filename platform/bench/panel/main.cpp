#include "platform/bench/Files.h"
#include "platform/bench/panel/PanelWindow.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

int main(int argc, char **argv)
{
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
