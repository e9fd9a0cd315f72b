// ProcessHandle: a process, found by its id. Ids are given to new processes
// when the old ones are gone; a handle stays with the process that had the id
// when it was made, and does not reach a later one: by pidfd_open(2), or else by
// the time when the process started. Not shared between threads.
#pragma once

#include <cstdint>
#include <string>

#include "FileDescriptor.h"

class ProcessHandle final {
public:
    /// `pid` may be any number; one that no process has gives a handle that
    /// reaches none.
    explicit ProcessHandle(std::int32_t pid);

    /// Whether the process exists: it does until the parent has waited for one
    /// that has ended. The null signal tells, and only where that cannot its
    /// status file in /proc, which may hide what runs (by the mount option
    /// hidepid), or be that of another namespace.
    [[nodiscard]] bool isRunning() const;
    /// Delivers `signal` as sigqueue(3) does, with the value 0. Gives 0, or the
    /// errno of the failure: ESRCH when the process is gone.
    [[nodiscard]] int queueSignal(int signal) const;
    /// Delivers `signal` as kill(2) does. Gives the same.
    [[nodiscard]] int sendSignal(int signal) const;

private:
    [[nodiscard]] bool isUsable() const;
    [[nodiscard]] int send(int signal, bool queued) const;

    std::int32_t pid_;
    bool reachesNone_;
    FileDescriptor descriptor_;  ///< see pidfd_open(2); not every system has it
    std::string startTicks_;     ///< without it, tells processes apart
};

/// Whether a process other than this one has the id `pid`, which may be any
/// number, and is running. A container's processes get the same small ids at
/// every start: its old launcher may have had the id of this one.
[[nodiscard]] bool isOtherProcessRunning(std::int32_t pid);
