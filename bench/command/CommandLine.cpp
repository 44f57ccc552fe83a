#include "bench/command/CommandLine.h"

#include "bench/core/Catalogue.h"
#include "bench/core/Files.h"
#include "bench/core/Text.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

const Option BenchOption{QStringLiteral("--bench"), QStringLiteral("DIR"),
    QStringLiteral("the bench folder, instead of $TARVO_BENCH")};
const Option HelpOption{QStringLiteral("--help"), QString(), QStringLiteral("print this help")};

QVector<Option> optionsOf(const Command &command)
{
    QVector<Option> all = command.options;
    all << BenchOption << HelpOption;
    return all;
}

const Command *findCommand(const QVector<Command> &commands, const QStringList &words)
{
    for (const Command &command : commands) {
        const QStringList name = command.name.split(QLatin1Char(' '));
        if (words.mid(0, name.size()) == name) {
            return &command;
        }
    }
    return nullptr;
}

QString table(const QVector<QStringList> &rows)
{
    qsizetype width = 0;
    for (const QStringList &row : rows) {
        width = std::max(width, static_cast<qsizetype>(row.first().size()));
    }
    QString text;
    for (const QStringList &row : rows) {
        text += QStringLiteral("  ") + row.first().leftJustified(static_cast<int>(width) + 2) + row.last()
            + QLatin1Char('\n');
    }
    return text;
}

QString helpText(const QVector<Command> &commands)
{
    QVector<QStringList> rows;
    for (const Command &command : commands) {
        rows.append({command.name, command.summary});
    }
    return QStringLiteral("A bench of drives as files, in place of drives on a desk.\n\n"
                          "Usage: drive-bench COMMAND [ARGUMENTS] [OPTIONS]\n\nCommands:\n")
        + table(rows)
        + QStringLiteral("\nEvery command takes --bench DIR (otherwise $TARVO_BENCH, otherwise the folder "
                         "\"bench\" beside the\nexecutable) and --help. Exit status: 0 done, 1 refused, "
                         "2 wrong usage.\n\nExample:\n  drive-bench init --bench /tmp/bench\n");
}

QString helpText(const Command &command)
{
    QString usage = QStringLiteral("drive-bench ") + command.name;
    for (const QString &part : {command.usage, QStringLiteral("[OPTIONS]")}) {
        usage += part.isEmpty() ? QString() : QLatin1Char(' ') + part;
    }
    QVector<QStringList> rows;
    for (const Option &option : optionsOf(command)) {
        rows.append({option.name + (option.value.isEmpty() ? QString() : QLatin1Char(' ') + option.value),
            option.description});
    }
    const QString details =
        command.details.isEmpty() ? QString() : QLatin1Char('\n') + command.details + QLatin1Char('\n');
    QString summary = command.summary;
    summary[0] = summary.at(0).toUpper();
    return QStringLiteral("%1.\n\nUsage: %2\n%3\nOptions:\n%4\nExample:\n  %5\n")
        .arg(summary, usage, details, table(rows), command.example);
}

/// What may stand as an argument behind those `before` it.
QStringList candidates(Argument argument, const QStringList &before, const QString &benchFolder)
{
    QStringList found;
    QStringList ignored;
    switch (argument) {
    case Argument::Serial:
        for (const Drive &drive : Bench(benchFolder, QString()).drives(&ignored)) {
            found.append(escaped(drive.serial));
        }
        return found;
    case Argument::Model:
        for (const Model &model : models()) {
            found.append(model.name);
        }
        return found;
    case Argument::FaultName:
        for (const FaultKind &kind : faultKinds()) {
            found.append(QString::fromLatin1(kind.name));
        }
        return found;
    case Argument::FaultOfDrive:
        for (const Drive &drive : Bench(benchFolder, QString()).drives(&ignored)) {
            for (const Fault &fault : drive.faults) {
                if (escaped(drive.serial) == before.first() && !found.contains(fault.name)) {
                    found.append(fault.name);
                }
            }
        }
        return found;
    case Argument::FaultValue:
        if (before.last() == QLatin1String("text")) {
            for (const QString &field : faultFields()) {
                found.append(field + QLatin1Char('='));
            }
        }
        return found;
    case Argument::File:
        break;
    }
    return found;
}

} // namespace

int refuse(const QString &line)
{
    std::fprintf(stderr, "drive-bench: %s\n", line.toUtf8().constData());
    return 1;
}

int wrongUsage(const QString &line, const QString &command)
{
    const QString space = command.isEmpty() ? QString() : QStringLiteral(" ");
    refuse(QStringLiteral("%1; see: drive-bench%2%3 --help").arg(line, space, command));
    return 2;
}

void print(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
}

void printProblems(const QStringList &problems)
{
    for (const QString &problem : problems) {
        std::fprintf(stderr, "%s\n", problem.toUtf8().constData());
    }
}

Bench CommandLine::bench() const
{
    return Bench(benchFolder(), executableFolder());
}

QString CommandLine::benchFolder() const
{
    return has("--bench") ? value("--bench") : Bench::defaultFolder();
}

qint64 CommandLine::number(const char *option, qint64 otherwise) const
{
    return has(option) ? value(option).toLongLong() : otherwise;
}

int CommandLine::run(const QVector<Command> &commands, const QStringList &arguments)
{
    if (arguments.isEmpty() || arguments.first() == QLatin1String("--help")) {
        print(helpText(commands));
        return arguments.isEmpty() ? 2 : 0;
    }
    const Command *const command = findCommand(commands, arguments);
    if (command == nullptr) {
        return wrongUsage(QStringLiteral("there is no command \"%1\"").arg(arguments.first()), QString());
    }

    CommandLine line;
    const int words = static_cast<int>(command->name.count(QLatin1Char(' '))) + 1;
    bool optionsEnded = false;
    for (int i = words; i < arguments.size(); ++i) {
        const QString &word = arguments.at(i);
        if (word == QLatin1String("--") && !optionsEnded) {
            optionsEnded = true;
            continue;
        }
        if (optionsEnded || !word.startsWith(QLatin1String("--"))) {
            line.given.append(word);
            continue;
        }
        const QVector<Option> known = optionsOf(*command);
        const auto option = std::find_if(
            known.begin(), known.end(), [&word](const Option &candidate) { return candidate.name == word; });
        if (option == known.end()) {
            return wrongUsage(QStringLiteral("there is no option \"%1\"").arg(word), command->name);
        }
        if (option->value.isEmpty()) {
            line.options.insert(word, QString());
            continue;
        }
        const QString value = arguments.value(++i);
        if (value.isEmpty()) {
            return wrongUsage(QStringLiteral("%1 needs a value, %2").arg(word, option->value), command->name);
        }
        bool isNumber = false;
        const qint64 number = value.toLongLong(&isNumber);
        if (option->maximum > 0 && (!isNumber || number < option->minimum || number > option->maximum)) {
            return wrongUsage(QStringLiteral("%1 needs a whole number from %2 to %3")
                                  .arg(word)
                                  .arg(option->minimum)
                                  .arg(option->maximum),
                command->name);
        }
        line.options.insert(word, value);
    }
    if (line.has("--help")) {
        print(helpText(*command));
        return 0;
    }
    if (line.given.size() < command->minimum) {
        return wrongUsage(QStringLiteral("%1 needs %2").arg(command->name, command->usage), command->name);
    }
    if (line.given.size() > command->maximum) {
        return wrongUsage(
            QStringLiteral("too many arguments, from \"%1\" on").arg(line.given.at(command->maximum)),
            command->name);
    }
    return command->run(line);
}

QStringList CommandLine::complete(const QVector<Command> &commands, const QStringList &words)
{
    QStringList found;
    const QStringList before = words.mid(0, std::max(0, static_cast<int>(words.size()) - 1));
    const QString start = words.isEmpty() ? QString() : words.last();
    const Command *const command = findCommand(commands, before);
    if (command == nullptr) {
        for (const Command &candidate : commands) {
            // Of a command of two words, the second is offered once the first is there.
            const QStringList name = candidate.name.split(QLatin1Char(' '));
            if (name.mid(0, before.size()) == before && name.size() > before.size()) {
                found.append(name.at(before.size()));
            }
        }
        found.removeDuplicates();
        if (before.isEmpty() && start.startsWith(QLatin1Char('-'))) {
            found.append(HelpOption.name);
        }
    } else {
        const QVector<Option> options = optionsOf(*command);
        QStringList given;
        QString benchFolder = Bench::defaultFolder();
        bool isValue = false;
        for (int i = 0; i < before.size(); ++i) {
            if (isValue) {
                benchFolder = before.value(i - 1) == QLatin1String("--bench") ? before.at(i) : benchFolder;
                isValue = false;
                continue;
            }
            const auto option = std::find_if(options.begin(), options.end(),
                [&](const Option &candidate) { return candidate.name == before.at(i); });
            isValue = option != options.end() && !option->value.isEmpty();
            if (option == options.end()) {
                given.append(before.at(i));
            }
        }
        given = given.mid(static_cast<int>(command->name.count(QLatin1Char(' '))) + 1);
        if (isValue) {
            return {};
        }
        if (start.startsWith(QLatin1Char('-'))) {
            for (const Option &option : options) {
                found.append(option.name);
            }
        } else if (given.size() < command->maximum && !command->arguments.isEmpty()) {
            const auto index = std::min(given.size(), command->arguments.size() - 1);
            found = candidates(command->arguments.at(index), given, benchFolder);
        }
    }
    QStringList fitting;
    for (const QString &candidate : found) {
        if (candidate.startsWith(start)) {
            fitting.append(candidate);
        }
    }
    return fitting;
}

} // namespace bench
