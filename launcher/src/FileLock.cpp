#include "FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "SpecialFile.h"
#include "TextConversion.h"
#include "TrustedPath.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{2};  ///< others hold it for a moment only
constexpr std::chrono::milliseconds kRetryStep{1};
constexpr mode_t kMode = 0644;  ///< of a PID file

enum class Attempt { Locked, Busy, Impossible };

FileDescriptor openFile(const std::string& path, FileLock::Missing missing)
{
    const int creation = missing == FileLock::Missing::Create ? O_CREAT : 0;
    const TrustedPath place(path);
    FileDescriptor file = place.open(O_RDWR | creation, kMode);
    if (file.isOpen() || errno != EACCES) return file;
    return place.open(O_RDONLY);
}

/// A lock of the open file, which no close() of another descriptor ends, and
/// which does not meet the locks of flock(1), in which scripts wrap a start:
/// see "Open file description locks" in fcntl(2). Of a file that may only be
/// read such a lock cannot be exclusive; all who may not write it use flock(2).
Attempt tryLock(const FileDescriptor& file)
{
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (fcntl(file.get(), F_OFD_SETLK, &whole) == 0) return Attempt::Locked;
    if (errno == EBADF && flock(file.get(), LOCK_EX | LOCK_NB) == 0) return Attempt::Locked;
    const bool busy = errno == EAGAIN || errno == EACCES || errno == EINTR;
    return busy ? Attempt::Busy : Attempt::Impossible;
}

}  // namespace

FileLock::FileLock(const std::wstring& path, Missing missing)
{
    const std::string bytePath = toUtf8(path);
    if (isSpecialFile(bytePath)) return;
    const Clock::time_point deadline = Clock::now() + kPatience;
    while (Clock::now() < deadline) {
        file_ = openFile(bytePath, missing);
        if (!file_.isOpen()) {
            foundNoFile_ = errno == ENOENT;
            return;
        }
        const Attempt attempt = tryLock(file_);
        // The holder before may have deleted it.
        const bool isHeld = attempt == Attempt::Locked && leadsTo(bytePath, file_);
        if (isHeld || attempt == Attempt::Impossible) return;
        if (attempt == Attempt::Busy) std::this_thread::sleep_for(kRetryStep);
    }
}
