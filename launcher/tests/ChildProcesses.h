// ChildProcesses: the processes that a test has started, and those that they
// left to it: the test program adopts the orphans of its children, a detached
// launcher among them.
#pragma once

#include <sys/wait.h>

#include <csignal>
#include <map>
#include <string>

#include "ScopedTempDir.h"
#include "WaitUntil.h"

namespace ChildProcesses {

/// Those that have ended and that nobody has waited for, with the status.
inline std::map<pid_t, int> ended;

/// Takes the status of all that have ended; whether any other lives.
inline bool reap()
{
    int status = 0;
    pid_t pid = 0;
    while ((pid = waitpid(-1, &status, WNOHANG)) > 0) {
        ended[pid] = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }
    return pid == 0;
}

/// Exit status of a child or an adopted orphan, once; minus the signal's number
/// if one has killed it; -1000 for a process that has not ended in a minute.
/// Meanwhile every other one that ends is reaped too: to `launcher stop` a
/// process that nobody has reaped looks alive.
inline int waitForExit(pid_t pid)
{
    const auto hasEnded = [pid] { return reap(), ended.count(pid) != 0; };
    return waitUntil(hasEnded) ? ended.extract(pid).mapped() : -1000;
}

/// Kills all that live, also those that turn up as orphans meanwhile, and
/// gives their command lines.
inline std::string killAll()
{
    std::string killed;
    while (reap()) {
        const pid_t pid = std::stoi(readText("/proc/thread-self/children"));
        killed += readText("/proc/" + std::to_string(pid) + "/cmdline") + "\n";
        kill(pid, SIGKILL);
        waitForExit(pid);
    }
    return killed;
}

}  // namespace ChildProcesses
