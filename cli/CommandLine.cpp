// SPDX-License-Identifier: MIT
#include "cli/CommandLine.h"

#include <QCommandLineParser>

#include <cstdio>

namespace {

constexpr uint MostSeconds = 86400;

bool isSeconds(const QString &text)
{
    bool isNumber = false;
    return text.toUInt(&isNumber) <= MostSeconds && isNumber;
}

} // namespace

int refuse(const QString &line, ExitStatus status)
{
    std::fprintf(stderr, "tarvo-firmware: %s\n", qPrintable(line));
    return status;
}

std::optional<int> readArguments(
    QCommandLineParser &parser, const QString &command, const QStringList &arguments, const QString &examples)
{
    const QCommandLineOption help({"h", "help"}, "Print this help.");
    parser.addOptions(
        {{"timeout", "How long to wait for the statuses of all drives (30).", "SECONDS", "30"}, help});
    if (!parser.parse(QStringList("tarvo-firmware") + arguments)) {
        return refuse(parser.errorText() + QString(" See: tarvo-firmware %1 --help").arg(command), WrongUse);
    }
    if (parser.isSet(help)) {
        std::printf("%s\nExamples:\n%s",
            qPrintable(parser.helpText().replace("[options]", command + " [options]")), qPrintable(examples));
        return Done;
    }
    for (const QString option : {"timeout", "wait"}) {
        if (parser.optionNames().contains(option) && !isSeconds(parser.value(option))) {
            return refuse(
                QString("--%1 takes a whole number of seconds, at most %2").arg(option).arg(MostSeconds),
                WrongUse);
        }
    }
    return std::nullopt;
}

QDeadlineTimer deadline(const QCommandLineParser &parser, const QString &option)
{
    return QDeadlineTimer(parser.value(option).toLongLong() * 1000);
}
