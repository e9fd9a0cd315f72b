#include "ProcessHandle.h"

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "ProcessHistory.h"

namespace {

/// Whether the number is another process's by now, as far as that can be told: a
/// start time that cannot be read tells nothing.
bool hasChangedHands(pid_t pid, const std::string& startTicks)
{
    if (startTicks.empty()) return false;
    const std::string now = readStartTicks(pid);
    return !now.empty() && now != startTicks;
}

/// What sigqueue(3) tells the receiver.
siginfo_t queuedInfo(int signal)
{
    siginfo_t info{};
    info.si_signo = signal;
    info.si_code = SI_QUEUE;
    info.si_pid = getpid();
    info.si_uid = getuid();
    return info;
}

}  // namespace

ProcessHandle::ProcessHandle(std::int32_t pid) : pid_(pid), reachesNone_(pid <= 0)
{
    if (reachesNone_) return;
    // By number: the C library's functions for it are younger than the kernel's.
    descriptor_ = FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    reachesNone_ = !descriptor_.isOpen() && errno == ESRCH;
    if (reachesNone_ || isUsable()) return;
    descriptor_ = FileDescriptor();
    startTicks_ = readStartTicks(pid);
}

bool ProcessHandle::isRunning() const
{
    switch (sendSignal(0)) {
        case 0:
        case EPERM:
            return true;
        case ESRCH:
            return false;
        default:
            return access(("/proc/" + std::to_string(pid_) + "/status").c_str(), F_OK) == 0;
    }
}

int ProcessHandle::queueSignal(int signal) const
{
    int error = send(signal, true);
    while (error == EINTR || error == EAGAIN) error = send(signal, true);
    return error;
}

int ProcessHandle::sendSignal(int signal) const
{
    return send(signal, false);
}

/// Whether signals can be sent through the descriptor, as far as they can be sent: a
/// sandbox may allow pidfd_open(2) and refuse that, with any error.
bool ProcessHandle::isUsable() const
{
    if (!descriptor_.isOpen()) return false;
    const int error = sendSignal(0);
    return error == 0 || error == ESRCH || (error == EPERM && kill(pid_, 0) != 0);
}

int ProcessHandle::send(int signal, bool queued) const
{
    if (reachesNone_) return ESRCH;
    siginfo_t info = queuedInfo(signal);
    long result = 0;
    if (descriptor_.isOpen()) {
        result =
            syscall(SYS_pidfd_send_signal, descriptor_.get(), signal, queued ? &info : nullptr, 0);
    } else if (hasChangedHands(pid_, startTicks_)) {
        return ESRCH;
    } else {
        result = queued ? sigqueue(pid_, signal, sigval{}) : kill(pid_, signal);
    }
    return result == 0 ? 0 : errno;
}

bool isOtherProcessRunning(std::int32_t pid)
{
    return pid != getpid() && ProcessHandle(pid).isRunning();
}
