#include "ProcessHandle.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "ChildProcesses.h"

namespace {

constexpr int kNoRights = 77;

/// A child that waits to be killed; 0 when it cannot be had.
pid_t startVictim()
{
    const pid_t pid = fork();
    if (pid == 0) {
        for (;;) pause();
    }
    return pid;
}

/// Whether `handle` reaches a process.
bool reaches(const ProcessHandle& handle)
{
    return handle.isRunning() && handle.sendSignal(0) == 0 && handle.queueSignal(0) == 0;
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

/// The first process of a namespace of ids, where the next one can be chosen.
int reuseAnId(bool inSandbox)
{
    if (mount("proc", "/proc", "proc", 0, nullptr) != 0) return kNoRights;
    if (inSandbox && !refuseSignalsThroughDescriptors()) return kNoRights;
    const pid_t first = startVictim();
    const ProcessHandle handle(first);
    if (!reaches(handle) || handle.sendSignal(SIGKILL) != 0) return 1;
    waitid(P_PID, static_cast<id_t>(first), nullptr, WEXITED | WNOWAIT);
    if (!handle.isRunning()) return 2;  // nobody has reaped it
    waitpid(first, nullptr, 0);
    usleep(20'000);  // two ticks: without a descriptor the start time tells them apart
    std::ofstream("/proc/sys/kernel/ns_last_pid") << first - 1 << std::flush;
    if (startVictim() != first) return kNoRights;
    const bool isReached = handle.isRunning() || handle.sendSignal(SIGKILL) != ESRCH ||
                           handle.queueSignal(SIGKILL) != ESRCH;
    return isReached || !reaches(ProcessHandle(first)) ? 3 : 0;
}

class ProcessHandleTest : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(, ProcessHandleTest, testing::Bool(), [](const auto& inSandbox) {
    return inSandbox.param ? "InASandbox" : "ThroughADescriptor";
});

TEST_P(ProcessHandleTest, ReachesItsProcessAndNeverALaterOneWithTheSameId)
{
    const pid_t outer = fork();
    if (outer == 0) {
        const bool apart = unshare(CLONE_NEWPID | CLONE_NEWNS) == 0 &&
                           mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
        if (!apart) _exit(kNoRights);
        const pid_t inner = fork();
        if (inner == 0) _exit(reuseAnId(GetParam()));
        int status = 0;
        waitpid(inner, &status, 0);
        _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 1);
    }
    const int status = ChildProcesses::waitForExit(outer);
    if (status == kNoRights) GTEST_SKIP() << "needs the right to make namespaces";
    EXPECT_EQ(status, 0);
}

}  // namespace
