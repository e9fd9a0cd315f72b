#include "Detachment.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "FileDescriptor.h"

namespace {

/// Waits until nobody can write to `pipe`, and ends as `child` has.
[[noreturn]] void endAfterRelease(const FileDescriptor& pipe, pid_t child)
{
    char nothing = 0;
    while (read(pipe.get(), &nothing, 1) < 0 && errno == EINTR) continue;
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
    _exit(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
}

}  // namespace

bool Detachment::detach()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
    const FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    // Whoever ignores its children learns nothing of them.
    const auto childAction = std::signal(SIGCHLD, SIG_DFL);
    // daemon(3) ends the process that calls it: that is the child, not the one
    // that is waited for.
    const pid_t child = fork();
    if (child > 0) {
        writeEnd = FileDescriptor();
        endAfterRelease(readEnd, child);
    }
    std::signal(SIGCHLD, childAction);
    if (child < 0 || daemon(1, 1) != 0) return false;
    release_ = writeEnd.release();
    return true;
}

void Detachment::release()
{
    if (release_ >= 0) close(std::exchange(release_, -1));
}
