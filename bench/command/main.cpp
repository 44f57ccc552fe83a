#include "bench/command/CommandLine.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int main(int argc, char **argv)
{
    bench::CommandLine line;
    int status = 0;
    // For the completions of the shells: the words up to the one that is to be completed.
    if (argc > 1 && std::strcmp(argv[1], "--complete") == 0) {
        bench::print(bench::completions(line, {argv + 2, argv + argc}));
    } else {
        status = line.run(argc, argv);
    }
    // What was not printed whole, to a full disk for one, must not pass for an answer.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "drive-bench: cannot print: %s\n", std::strerror(errno));
        return 1;
    }
    return status;
}
