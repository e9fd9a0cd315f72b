#include "ProcessHandle.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "ChildProcesses.h"

namespace {

constexpr int kNoRights = 77;

/// A child that waits to be killed, with the id that was asked for; negative
/// when it cannot be had.
pid_t startVictim(pid_t id = 0)
{
    clone_args arguments{};
    arguments.exit_signal = SIGCHLD;
    arguments.set_tid = id == 0 ? 0 : reinterpret_cast<std::uintptr_t>(&id);
    arguments.set_tid_size = id == 0 ? 0 : 1;
    const long pid = syscall(SYS_clone3, &arguments, sizeof arguments);
    if (pid == 0) _exit(pause());
    return static_cast<pid_t>(pid);
}

/// As of a sandbox that allows to open a process, and not to signal it that way.
bool refuseSignalsThroughDescriptors()
{
    sock_filter refuse[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_send_signal, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(refuse), refuse};
    return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

/// Whether `handle` reaches a process.
bool reaches(const ProcessHandle& handle)
{
    return handle.isRunning() && handle.sendSignal(0) == 0 && handle.queueSignal(0) == 0;
}

int reuseAnId(bool inSandbox)
{
    if (inSandbox && !refuseSignalsThroughDescriptors()) return kNoRights;
    const pid_t first = startVictim();
    if (first < 0) return kNoRights;
    const ProcessHandle handle(first);
    if (!reaches(handle) || handle.sendSignal(SIGKILL) != 0) return 1;
    waitid(P_PID, static_cast<id_t>(first), nullptr, WEXITED | WNOWAIT);
    if (!handle.isRunning()) return 2;  // nobody has reaped it
    waitpid(first, nullptr, 0);
    if (inSandbox) usleep(20'000);  // two ticks: there the start time tells them apart
    if (startVictim(first) != first) return kNoRights;
    const bool isReached = handle.isRunning() || handle.sendSignal(SIGKILL) != ESRCH ||
                           handle.queueSignal(SIGKILL) != ESRCH;
    const bool isThere = reaches(ProcessHandle(first));
    kill(first, SIGKILL);
    return isReached || !isThere ? 3 : 0;
}

TEST(ProcessHandleTest, ReachesItsProcessAndNeverALaterOneWithTheSameId)
{
    for (const bool inSandbox : {false, false, false, true}) {  // a tick may pass meanwhile
        const pid_t child = fork();
        if (child == 0) _exit(reuseAnId(inSandbox));
        const int status = ChildProcesses::waitForExit(child);
        if (status == kNoRights) GTEST_SKIP() << "needs the rights to filter calls and choose ids";
        EXPECT_EQ(status, 0) << inSandbox;
    }
}

}  // namespace
