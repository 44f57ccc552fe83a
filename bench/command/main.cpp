#include "bench/core/Files.h"
#include "bench/command/Commands.h"

#include <cstdio>

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromUtf8(argv[i]));
    }
    // For the completions of the shells: the words up to the one that is to be completed.
    if (arguments.value(0) == QLatin1String("--complete")) {
        const QStringList found = bench::CommandLine::complete(bench::allCommands(), arguments.mid(1));
        if (!found.isEmpty()) {
            bench::print(found.join(QLatin1Char('\n')) + QLatin1Char('\n'));
        }
        return 0;
    }
    const int status = bench::CommandLine::run(bench::allCommands(), arguments);
    // What was not printed whole, to a full disk for one, must not pass for an answer.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        return bench::refuse(QStringLiteral("cannot print: %1").arg(bench::systemReason()));
    }
    return status;
}
