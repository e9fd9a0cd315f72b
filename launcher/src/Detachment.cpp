#include "Detachment.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

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
    // daemon(3) ends the process that calls it: that is the child, not the one
    // that is waited for.
    const pid_t child = fork();
    if (child < 0) return false;
    if (child > 0) {
        writeEnd = FileDescriptor();
        endAfterRelease(readEnd, child);
    }
    if (daemon(1, 1) != 0) return false;
    release_ = std::move(writeEnd);
    return true;
}
