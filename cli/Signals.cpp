// SPDX-License-Identifier: MIT
#include "cli/Signals.h"

#include <csignal>
#include <initializer_list>

namespace {

volatile std::sig_atomic_t endRequested = 0;

/// Leaves alone what is ignored already, as nohup has it.
void handle(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) {
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

void holdSignals()
{
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        handle(signal, [](int) { endRequested = 1; });
    }
    for (const int signal : {SIGPIPE, SIGTSTP, SIGTTOU}) {
        handle(signal, SIG_IGN);
    }
}

bool isEndRequested()
{
    return endRequested != 0;
}
