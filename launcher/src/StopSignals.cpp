#include "StopSignals.h"

sigset_t stopSignalSet()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signalNumber : kStopSignals) sigaddset(&set, signalNumber);
    return set;
}

sigset_t allSignalsButFaults()
{
    sigset_t set;
    sigfillset(&set);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP}) sigdelset(&set, fault);
    return set;
}

InterruptHold::~InterruptHold()
{
    if (held_) sigaction(SIGINT, &interruptBefore_, nullptr);
}

void InterruptHold::hold()
{
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
    sigset_t others = stopSignalSet();
    sigdelset(&others, SIGINT);
    pthread_sigmask(SIG_UNBLOCK, &others, nullptr);
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    sigemptyset(&ignored.sa_mask);
    sigaction(SIGINT, &ignored, &interruptBefore_);
    held_ = true;
}

void InterruptHold::deliver()
{
    sigaction(SIGINT, &interruptBefore_, nullptr);
    const sigset_t stopSignals = stopSignalSet();
    pthread_sigmask(SIG_UNBLOCK, &stopSignals, nullptr);
    held_ = false;
}
