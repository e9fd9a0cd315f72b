#include "TrustedPath.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>

namespace {

constexpr int kPlace = O_PATH | O_CLOEXEC;
constexpr int kMaxLinks = 40;  ///< as the kernel's, see path_resolution(7)

FileDescriptor startOf(const std::string& path)
{
    return FileDescriptor(open(path.starts_with('/') ? "/" : ".", kPlace | O_DIRECTORY));
}

/// Cuts the first name off `path`; "." where only slashes are left.
std::string takeName(std::string& path)
{
    path.erase(0, path.find_first_not_of('/'));
    std::string name = path.substr(0, path.find('/'));
    path.erase(0, name.size());
    return name.empty() ? "." : name;
}

/// The links of /proc lead to a file, not to a name; see proc(5).
bool isOnProc(const FileDescriptor& link)
{
    struct statfs status {};
    return fstatfs(link.get(), &status) == 0 && status.f_type == PROC_SUPER_MAGIC;
}

/// Empty, with errno, on failure.
std::string targetOf(const FileDescriptor& link)
{
    std::array<char, PATH_MAX> target{};
    return readlinkat(link.get(), "", target.data(), target.size() - 1) < 0 ? "" : target.data();
}

}  // namespace

TrustedPath::TrustedPath(const std::string& path, LastLink lastLink, uid_t alsoTrusted)
    : alsoTrusted_(alsoTrusted),
      error_(path.empty()             ? ENOENT
             : path.size() < PATH_MAX ? walk(path, lastLink)
                                      : ENAMETOOLONG)
{
}

FileDescriptor TrustedPath::open(int flags, mode_t mode) const
{
    constexpr int kWithoutWaiting = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    if (!isFound()) return {};
    FileDescriptor file(
        openat(directory_.get(), name_.c_str(), flags | lastLinkFlag_ | kWithoutWaiting, mode));
    if (file.isOpen()) fcntl(file.get(), F_SETFL, flags);  // waits again
    return file;
}

int TrustedPath::makeDirectory() const
{
    return isFound() ? mkdirat(directory_.get(), name_.c_str(), 0777) : -1;
}

int TrustedPath::unlink() const
{
    return isFound() ? unlinkat(directory_.get(), name_.c_str(), 0) : -1;
}

int TrustedPath::renameToFree(const std::string& newName) const
{
    const auto rename = [&](unsigned flags) {
        return renameat2(directory_.get(), name_.c_str(), directory_.get(), newName.c_str(), flags);
    };
    if (!isFound()) return -1;
    const int renamed = rename(RENAME_NOREPLACE);
    if (renamed == 0 || (errno != EINVAL && errno != EPERM)) return renamed;
    // Not every file system can refuse to replace, nor lets every sandbox ask for it.
    struct stat status {};
    const bool isFree =
        fstatat(directory_.get(), newName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 &&
        errno == ENOENT;
    if (isFree) return rename(0);
    errno = EEXIST;
    return -1;
}

/// Gives 0, or the errno of the failure.
int TrustedPath::walk(std::string path, LastLink lastLink)
{
    int links = 0;
    directory_ = startOf(path);
    while (directory_.isOpen()) {
        name_ = takeName(path);
        const bool isLast = path.empty();
        if (isLast && lastLink == LastLink::Keep) return 0;
        if (!isLast) {
            // Has that mounted, too, which is mounted on demand: see O_PATH in open(2).
            FileDescriptor next = openPlace(O_NOFOLLOW | O_DIRECTORY);
            if (next.isOpen()) {
                directory_ = std::move(next);
                continue;
            }
            if (errno != ENOTDIR) return errno;
        }
        const FileDescriptor found = openPlace(O_NOFOLLOW);
        if (!found.isOpen()) return isLast && errno == ENOENT ? 0 : errno;
        struct stat status {};
        if (fstat(found.get(), &status) != 0) return errno;
        if (!S_ISLNK(status.st_mode)) return isLast ? 0 : ENOTDIR;
        if (!isTrusted(status.st_uid) || ++links > kMaxLinks) return ELOOP;
        const int error = follow(found, path);
        if (error != 0 || lastLinkFlag_ == 0) return error;
    }
    return errno;
}

/// Puts the target of `link` before the rest of `path`. Gives the same.
int TrustedPath::follow(const FileDescriptor& link, std::string& path)
{
    if (isOnProc(link)) {
        if (path.empty()) {
            lastLinkFlag_ = 0;
            return 0;
        }
        directory_ = openPlace(O_DIRECTORY);
    } else {
        const std::string target = targetOf(link);
        if (target.empty()) return errno;
        if (target.starts_with('/')) directory_ = startOf(target);
        path.insert(0, target);
    }
    return directory_.isOpen() ? 0 : errno;
}

FileDescriptor TrustedPath::openPlace(int flags) const
{
    return FileDescriptor(openat(directory_.get(), name_.c_str(), kPlace | flags));
}

/// Whoever owns the root directory is as good as root: in a user namespace, where
/// root may have no number (nor have others, who pass then, too).
bool TrustedPath::isTrusted(uid_t owner) const
{
    struct stat root {};
    if (owner == 0 || owner == geteuid() || owner == alsoTrusted_) return true;
    return stat("/", &root) == 0 && owner == root.st_uid;
}

bool TrustedPath::isFound() const
{
    errno = error_;
    return error_ == 0;
}

bool leadsTo(const std::string& path, const FileDescriptor& file)
{
    struct stat opened {};
    struct stat named {};
    return fstat(file.get(), &opened) == 0 && stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}
