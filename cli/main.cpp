// SPDX-License-Identifier: MIT
#include "Version.h"
#include "cli/CommandLine.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr const char *Help = R"(Usage: tarvo-firmware COMMAND [options]
Brings the firmware of Tarvo drives up to date without a window.

Commands:
  list      List the attached drives
  update    Write new firmware into drives
  report    Print a document for a support request

Options:
  -h, --help     Print this help; after a command, help for that
  -v, --version  Print the version

Exit status:
  0  Everything asked for is up to date or done
  1  An update failed or was not begun, or a drive's status could not be found out
  2  Wrong usage, or a drive that is not there or cannot be updated
  3  Written, and a drive is still to be restarted
  4  Refused because Tarvo Quaydesk is installed

Examples:
  tarvo-firmware list
  tarvo-firmware update --all --wait
)";

struct Command
{
    const char *name;
    int (*run)(const QStringList &arguments);
};

constexpr Command Commands[] = {{"list", listDrives}, {"update", updateDrives}, {"report", reportOnDrives}};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString first = arguments.value(0);
    for (const Command &command : Commands) {
        if (first == command.name) {
            return command.run(arguments.mid(1));
        }
    }
    if (first == "-h" || first == "--help") {
        std::printf("%s", Help);
        return Done;
    }
    if (first == "-v" || first == "--version") {
        std::printf("tarvo-firmware %s\n", TarvoVersion);
        return Done;
    }
    return refuse("it takes a command: list, update or report. See: tarvo-firmware --help", WrongUse);
}
