#include "PidFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "FileContent.h"
#include "FileDescriptor.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "ISystemUtils.h"
#include "LauncherOsException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "ProcessHandle.h"
#include "ProcessHistory.h"
#include "SpecialFile.h"
#include "TextConversion.h"
#include "TrustedPath.h"

namespace {

constexpr wchar_t kClass[] = L"PidFile";
constexpr std::uint32_t kMaxPidDigits = 9;  // whatever they are, the number fits 32 bits

std::wstring textOfError(int error)
{
    errno = error;
    return getOsUtilsFactory().getSystemUtils().getLastErrorText();
}

/// What a PID file holds.
struct Content {
    std::int32_t pid;     ///< -1 when it holds none
    const char* errorId;  ///< why not; null when it holds one
};

Content readContent(const std::wstring& path)
{
    const auto file = getOsUtilsFactory().getFileUtils().readFile(path);
    if (file->size() == 0) return {-1, IDS_PIDFILE_ZEROSIZE};
    if (file->size() > kMaxPidDigits) return {-1, IDS_PIDFILE_EXTRACHARS};
    // Leading white space and a sign pass on purpose, unlike in stop mode.
    char* end = nullptr;
    const unsigned long pid = std::strtoul(file->data(), &end, 10);
    if (end != file->data() + file->size()) return {-1, IDS_PIDFILE_BAD_CHARS};
    return {static_cast<std::int32_t>(pid), nullptr};
}

/// An opened PID file. The links of its owner count on the way to it, too: they lead
/// to what is his own.
class OpenPidFile final {
public:
    explicit OpenPidFile(const std::string& path)
        : owner_(ownerOf(path)), place_(path, TrustedPath::LastLink::Follow, owner_)
    {
        errno = EINVAL;
        if (isSpecialFile(path)) return;             // opening one may have effects
        file_ = place_.open(O_RDONLY | O_NONBLOCK);  // whatever it is by now, without waiting
        if (file_.isOpen() && (fstat(file_.get(), &status_) != 0 || status_.st_uid != owner_)) {
            file_ = FileDescriptor();
            errno = ELOOP;  // his link leads to another's file
        }
    }

    [[nodiscard]] bool isOpen() const { return file_.isOpen(); }
    [[nodiscard]] uid_t owner() const { return owner_; }
    [[nodiscard]] bool isOthersToWrite() const
    {
        return (status_.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    }
    /// In digits and nothing else, leading zeros aside. Once.
    [[nodiscard]] bool holds(std::int32_t pid) const
    {
        std::array<char, kMaxPidDigits + 3> text{};
        const ssize_t size = isOpen() ? read(file_.get(), text.data(), text.size() - 1) : -1;
        char* end = text.data();
        return size > 0 && std::strtol(text.data(), &end, 10) == pid && end == text.data() + size;
    }
    /// Where it was opened: its directory may have another name by now.
    [[nodiscard]] int unlink() const { return place_.unlink(); }

private:
    static uid_t ownerOf(const std::string& path)
    {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_uid : 0;
    }

    uid_t owner_;
    TrustedPath place_;
    FileDescriptor file_;
    struct stat status_ {};
};

}  // namespace

bool PidFile::mayExist(const std::wstring& path) const
{
    try {
        return getOsUtilsFactory().getFileUtils().fileExists(path);
    } catch (const LauncherException&) {
        return true;
    }
}

void PidFile::save(const std::wstring& path) const
{
    if (path.empty()) return;
    IOsUtilsFactory& os = getOsUtilsFactory();
    const std::string pid = std::to_string(os.getProcessUtils().getCurrentProcessId());
    try {
        os.getFileUtils().writeFile(pid.data(), static_cast<std::uint32_t>(pid.size()), path);
    } catch (const LauncherException& e) {
        throw LauncherException(exit_code::kPidFile, e.message());
    }
    logInfo({kClass, L"save"}, L"PID saved", L"path", path);
}

std::optional<std::wstring> PidFile::remove(const std::wstring& path) const
{
    if (path.empty()) {
        logInfo({kClass, L"remove"}, L"No PID file was removed because none was written.");
        return std::nullopt;
    }
    const IFileUtils& files = getOsUtilsFactory().getFileUtils();
    try {
        if (!files.fileExists(path)) {
            logInfo({kClass, L"remove"}, L"PID file is absent, nothing to remove", L"path", path);
            return std::nullopt;
        }
        if (files.isDirectory(path)) {
            logError({kClass, L"remove"},
                     L"PID file path points to directory, so will not be deleted", L"path", path);
            return textOfError(EISDIR);
        }
        if (isSpecialFile(toUtf8(path))) {
            logError({kClass, L"remove"},
                     L"PID file path points to no regular file, so will not be deleted", L"path",
                     path);
            return textOfError(EINVAL);
        }
        files.deleteFile(path);  // false when another process was faster: gone all the same
    } catch (const LauncherException& e) {
        const std::wstring error = textOfError(errno);
        logError({kClass, L"remove"}, L"Cannot remove PID file", L"path", path, L"Error",
                 e.message());
        return error;
    }
    logInfo({kClass, L"remove"}, L"PID file was removed", L"path", path);
    return std::nullopt;
}

std::int32_t PidFile::read(const std::wstring& path, std::wostream& errorStream) const
{
    if (path.empty()) {
        throw LauncherException(L"Invalid state. Cannot read a PID because file name was not set");
    }
    const Content content = readContent(path);
    if (content.errorId) errorStream << formatMessage(content.errorId, path);
    return content.pid;
}

bool PidFile::isOlderThanProcess(const std::wstring& path, std::int32_t pid) const
{
    if (!cannotHaveWritten(pid, toUtf8(path))) return false;
    logInfo({kClass, L"isOlderThanProcess"}, L"PID file is older than the process with its PID",
            L"path", path, L"pid", pid);
    return true;
}

bool PidFile::isOwnedBy(const std::wstring& path, std::int32_t pid) const
{
    return isOtherProcessRunning(pid) && !isOlderThanProcess(path, pid);
}

bool PidFile::holds(const std::wstring& path, std::int32_t pid) const
{
    return OpenPidFile(toUtf8(path)).holds(pid);
}

bool PidFile::removeIfItHolds(const std::wstring& path, std::int32_t pid) const
{
    const OpenPidFile file(toUtf8(path));
    if (!file.holds(pid)) return false;
    if (file.unlink() == 0) return true;
    const std::wstring error = getOsUtilsFactory().getSystemUtils().getLastErrorText();
    throw LauncherOsException(formatMessage(IDS_CANNOT_DELETE_FILE, path, error));
}

std::optional<std::wstring> PidFile::reasonToDistrust(const std::wstring& path,
                                                      std::int32_t pid) const
{
    if (geteuid() != 0) return std::nullopt;
    const OpenPidFile file(toUtf8(path));
    if (!file.isOpen()) return textOfError(errno);
    if (file.isOthersToWrite()) return L"others than the owner of the PID file may write to it";
    if (file.owner() != 0 && !belongsTo(file.owner(), pid)) {
        return L"the process is not that of the owner of the PID file";
    }
    // What was checked may not be what was read.
    if (!file.holds(pid)) return L"the PID file holds another number by now";
    return std::nullopt;
}

std::optional<std::int32_t> PidFile::runningOwner(const std::wstring& path) const
{
    if (isSpecialFile(toUtf8(path))) return std::nullopt;
    try {
        const Content content = readContent(path);
        if (isOwnedBy(path, content.pid)) return content.pid;
    } catch (const LauncherException&) {
        // One that cannot be read tells of nobody.
    }
    return std::nullopt;
}
