#include "StopSignals.h"

sigset_t stopSignalSet()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signalNumber : kStopSignals) sigaddset(&set, signalNumber);
    return set;
}

StopSignalHold::~StopSignalHold()
{
    if (held_) sigaction(SIGINT, &interruptBefore_, nullptr);
}

void StopSignalHold::hold()
{
    const sigset_t stopSignals = stopSignalSet();
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    sigemptyset(&ignored.sa_mask);
    sigaction(SIGINT, &ignored, &interruptBefore_);
    held_ = true;
}

void StopSignalHold::deliver()
{
    const sigset_t stopSignals = stopSignalSet();
    pthread_sigmask(SIG_UNBLOCK, &stopSignals, nullptr);
    held_ = false;
}
