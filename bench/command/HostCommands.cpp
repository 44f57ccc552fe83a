#include "bench/core/Companion.h"
#include "bench/core/Files.h"
#include "bench/command/Commands.h"

namespace bench {

namespace {

Companion companionOf(const CommandLine &line)
{
    return Companion(line.bench().folder());
}

int install(const CommandLine &line)
{
    QString reason;
    return companionOf(line).install(&reason) ? 0 : refuse(reason);
}

int uninstall(const CommandLine &line)
{
    QString reason;
    return companionOf(line).uninstall(&reason) ? 0 : refuse(reason);
}

int start(const CommandLine &line)
{
    QString reason;
    return companionOf(line).start(executableFolder() + QStringLiteral("/host-tools/host-tool"), &reason)
        ? 0
        : refuse(reason);
}

int stop(const CommandLine &line)
{
    QString reason;
    return companionOf(line).stop(&reason) ? 0 : refuse(reason);
}

} // namespace

QVector<Command> hostCommands()
{
    return {
        {QStringLiteral("companion install"), QString(), QStringLiteral("install the companion product"),
            QStringLiteral("Its service's property list and the kernel extension then lie in their folders, "
                           "and the program\n"
                           "warns of it."),
            QStringLiteral("drive-bench companion install"), {}, 0, 0, {}, install},
        {QStringLiteral("companion uninstall"), QString(),
            QStringLiteral("stop and remove the companion product"), QString(),
            QStringLiteral("drive-bench companion uninstall"), {}, 0, 0, {}, uninstall},
        {QStringLiteral("companion start"), QString(),
            QStringLiteral("start its applications and its service"),
            QStringLiteral("Each is a process of its own, which may be killed."),
            QStringLiteral("drive-bench companion start"), {}, 0, 0, {}, start},
        {QStringLiteral("companion stop"), QString(), QStringLiteral("stop its applications and its service"),
            QString(), QStringLiteral("drive-bench companion stop"), {}, 0, 0, {}, stop},
    };
}

} // namespace bench
