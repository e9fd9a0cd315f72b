#include "ProcessHandle.h"

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <sstream>

#include "FileHandle.h"

namespace {

/// Field 22 of /proc/<pid>/stat, see proc(5); empty when it cannot be read.
std::string readStartTime(pid_t pid)
{
    constexpr int kFieldsBehindName = 22 - 2;
    const FileHandle file = openFile("/proc/" + std::to_string(pid) + "/stat", "r");
    std::array<char, 1024> line{};
    if (!file || !fgets(line.data(), static_cast<int>(line.size()), file.get())) return {};
    std::string text = line.data();
    text.erase(0, text.rfind(')') + 1);  // the name may hold blanks and brackets
    std::istringstream fields(text);
    std::string field;
    for (int i = 0; i < kFieldsBehindName; ++i) fields >> field;
    return field;
}

/// Whether the number is another process's by now, as far as that can be told: a
/// start time that cannot be read tells nothing.
bool hasChangedHands(pid_t pid, const std::string& startTime)
{
    if (startTime.empty()) return false;
    const std::string now = readStartTime(pid);
    return !now.empty() && now != startTime;
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
    const bool isUsable = descriptor_.isOpen() && sendSignal(0) != ENOSYS;
    if (isUsable || reachesNone_) return;
    descriptor_ = FileDescriptor();
    startTime_ = readStartTime(pid);
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

int ProcessHandle::send(int signal, bool queued) const
{
    if (reachesNone_) return ESRCH;
    siginfo_t info = queuedInfo(signal);
    long result = 0;
    if (descriptor_.isOpen()) {
        result =
            syscall(SYS_pidfd_send_signal, descriptor_.get(), signal, queued ? &info : nullptr, 0);
    } else if (hasChangedHands(pid_, startTime_)) {
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
