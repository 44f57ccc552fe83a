#include "cli/SignalHold.h"

namespace {

volatile std::sig_atomic_t endRequested = 0;

void requestEnd(int)
{
    endRequested = 1;
}

} // namespace

SignalHold::SignalHold()
{
    endRequested = 0;
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGTSTP, SIGTTOU}) {
        struct sigaction old = {};
        sigaction(signal, nullptr, &old);
        // What is ignored already, as nohup has it, stays so.
        if (old.sa_handler != SIG_IGN) {
            struct sigaction held = {};
            const bool ends = signal != SIGPIPE && signal != SIGTSTP && signal != SIGTTOU;
            held.sa_handler = ends ? requestEnd : SIG_IGN;
            held.sa_flags = SA_RESTART;
            sigaction(signal, &held, nullptr);
            previous.push_back({signal, old});
        }
    }
}

SignalHold::~SignalHold()
{
    for (const Previous &before : previous) {
        sigaction(before.signal, &before.action, nullptr);
    }
}

bool SignalHold::isEndRequested()
{
    return endRequested != 0;
}
