#include "CrashWatchdog.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

constexpr unsigned kSeconds = 10;

extern "C" void abortOnAlarm(int)
{
    std::abort();
}

}  // namespace

CrashWatchdog::CrashWatchdog()
{
    struct sigaction action {};
    action.sa_handler = abortOnAlarm;
    sigemptyset(&action.sa_mask);
    sigaction(SIGALRM, &action, nullptr);
    sigset_t alarmOnly;
    sigemptyset(&alarmOnly);
    sigaddset(&alarmOnly, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &alarmOnly, nullptr);
    alarm(kSeconds);
}

CrashWatchdog::~CrashWatchdog()
{
    alarm(0);
}
