// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"

#include <cstdio>

int main(int argc, char **argv)
{
    const auto &functions = TestProgram::functions();
    const auto chosen = functions.find(argc > 1 ? argv[1] : "");
    if (chosen == functions.end()) {
        std::fprintf(stderr, "The first argument must be one of these:\n");
        for (const auto &[name, function] : functions) {
            std::fprintf(stderr, "  %s\n", name.c_str());
        }
        return 2;
    }
    argv[1] = argv[0];
    return chosen->second(argc - 1, argv + 1);
}
