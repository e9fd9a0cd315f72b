// TrustedPath: where a path leads, for writing, on the way that only root and the
// user of this process can have laid. Whoever may create a link in a directory
// could have a launcher of root's write, rename or delete any file of the system;
// so a link of another user's is not followed, wherever on the way it stands. The
// directory stays open: nobody can put another in its place.
#pragma once

#include <fcntl.h>

#include <string>

#include "FileDescriptor.h"

/// Of the log and of the files that the standard streams go to: they hold what
/// not everybody may know, passwords among the JVM's options, say.
inline constexpr mode_t kOutputFileMode = 0640;

class TrustedPath final {
public:
    /// What becomes of a link at the very end of the path.
    enum class LastLink { Follow, Keep };

    /// Walks `path` (UTF-8). Without a way the object has an error, ELOOP at a
    /// stranger's link, which its operations give. `alsoTrusted` is another user whose
    /// links count.
    explicit TrustedPath(const std::string& path, LastLink lastLink = LastLink::Follow,
                         uid_t alsoTrusted = 0);

    /// As open(2), but no link is followed any more, and a pipe, or a terminal, is
    /// not waited for nor taken over: a pipe that nobody reads fails with ENXIO,
    /// see fifo(7). What is written to the descriptor then waits as ever. None, with
    /// errno, on failure.
    [[nodiscard]] FileDescriptor open(int flags, mode_t mode = 0) const;
    /// As mkdir(2), unlink(2): 0, or -1 with errno.
    [[nodiscard]] int makeDirectory() const;
    [[nodiscard]] int unlink() const;
    /// As rename(2), to a name in the same directory that no file has: else EEXIST.
    [[nodiscard]] int renameToFree(const std::string& newName) const;

private:
    [[nodiscard]] int walk(std::string path, LastLink lastLink);
    [[nodiscard]] int follow(const FileDescriptor& link, std::string& path);
    [[nodiscard]] FileDescriptor openPlace(int flags) const;
    [[nodiscard]] bool isTrusted(uid_t owner) const;
    [[nodiscard]] bool isFound() const;

    FileDescriptor directory_;       ///< see O_PATH in open(2)
    std::string name_;               ///< in it, without a slash
    int lastLinkFlag_ = O_NOFOLLOW;  ///< 0 for a link of /proc, which leads to a file itself
    uid_t alsoTrusted_;
    int error_;
};

/// Whether `path`, all links followed, leads to the open file.
[[nodiscard]] bool leadsTo(const std::string& path, const FileDescriptor& file);
