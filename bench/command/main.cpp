// SPDX-License-Identifier: MIT
#include "bench/command/CommandLine.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int main(int argc, char **argv)
{
    bench::CommandLine line;
    const int status = line.run(argc, argv);
    // What was not printed whole, to a full disk for one, must not pass for an answer.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "drive-bench: cannot print: %s\n", std::strerror(errno));
        return 1;
    }
    return status;
}
