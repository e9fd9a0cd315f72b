// CrashWatchdog: sees to it that a process that crashes does end. A hook that
// runs inside a crash may need a lock that the crashed thread holds (the heap's,
// say) and hang: after a few seconds the watchdog aborts the process.
#pragma once

class CrashWatchdog final {
public:
    /// Arms the process's alarm; SIGALRM then aborts.
    CrashWatchdog();
    /// Calls the alarm off.
    ~CrashWatchdog();
    CrashWatchdog(const CrashWatchdog&) = delete;
    CrashWatchdog& operator=(const CrashWatchdog&) = delete;
};
