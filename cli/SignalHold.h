#pragma once

#include <csignal>

#include <vector>

/// While one exists, Ctrl-C, SIGTERM and a lost terminal do not end the process but are remembered, and what
/// stops it or tells it of a closed pipe has no effect. One at a time, on the main thread.
class SignalHold
{
public:
    SignalHold();
    ~SignalHold();
    SignalHold(const SignalHold &) = delete;
    SignalHold &operator=(const SignalHold &) = delete;

    /// True when the process has been asked to end.
    static bool isEndRequested();

private:
    struct Previous
    {
        int signal;
        struct sigaction action;
    };
    std::vector<Previous> previous;
};
