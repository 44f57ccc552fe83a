#include "cli/CommandLine.h"

#include <QCommandLineParser>

#include <cstdio>

int refuse(const QString &line, ExitStatus status)
{
    std::fprintf(stderr, "tarvo-firmware: %s\n", qPrintable(line));
    return status;
}

std::optional<int> readArguments(
    QCommandLineParser &parser, const QString &command, const QStringList &arguments, const QString &examples)
{
    const QCommandLineOption help({"h", "help"}, "Print this help.");
    parser.addOption(help);
    if (!parser.parse(QStringList("tarvo-firmware") + arguments)) {
        return refuse(parser.errorText() + QString(" See: tarvo-firmware %1 --help").arg(command), WrongUse);
    }
    if (parser.isSet(help)) {
        QString text = parser.helpText();
        text.replace("[options]", command + " [options]");
        std::printf("%s\nExamples:\n%s", qPrintable(text), qPrintable(examples));
        return Done;
    }
    return std::nullopt;
}

std::optional<QDeadlineTimer> deadlineFrom(const QString &seconds)
{
    bool isNumber = false;
    const uint number = seconds.toUInt(&isNumber);
    if (!isNumber || number > 86400) {
        return std::nullopt;
    }
    return QDeadlineTimer(qint64(number) * 1000);
}
