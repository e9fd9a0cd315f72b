#include "LinuxFileUtils.h"

#include <fcntl.h>
#include <libgen.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "DirHandle.h"
#include "FileContent.h"
#include "FileDescriptor.h"
#include "FileHandle.h"
#include "LastErrorText.h"
#include "LauncherOsException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "NameMask.h"
#include "TextConversion.h"
#include "TrustedPath.h"

namespace {

constexpr std::int64_t kMaximalFileSize = 10'485'760;
constexpr int kMaxTouches = 100;
constexpr std::size_t kElfIdentSize = 16;
constexpr std::size_t kElfClassIndex = 4;

/// Raises message `id` (path, error text) for the call that has just failed.
[[noreturn]] void raiseError(const char* id, const std::wstring& path)
{
    const std::wstring error = lastErrorText();
    throw LauncherOsException(formatMessage(id, path, error));
}

[[noreturn]] void raiseReadError(const std::wstring& path)
{
    raiseError(IDS_FILE_READ_ERROR, path);
}

/// Opens a file for reading. A pipe opens at once, too, and reads as empty
/// while it has no writer: nobody may make the launcher wait by its files.
FileHandle openForReading(const std::wstring& path)
{
    const int descriptor = open(toUtf8(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    FileHandle file(descriptor < 0 ? nullptr : fdopen(descriptor, "r"));
    if (!file) raiseReadError(path);
    return file;
}

/// Creates or truncates a file.
FileHandle openForWriting(const std::wstring& path)
{
    constexpr mode_t kMode = 0644;  // others may learn whom to stop, and not change it
    FileHandle file =
        toStream(TrustedPath(toUtf8(path)).open(O_WRONLY | O_CREAT | O_TRUNC, kMode), "w");
    if (!file) raiseError(IDS_FILE_WRITE_ERROR, path);
    return file;
}

/// Keeps a pipe open until the process ends: its reader would take a close for
/// the end of what comes, and go.
void keepPipeOpen(FileDescriptor file)
{
    struct stat status {};
    if (fstat(file.get(), &status) == 0 && S_ISFIFO(status.st_mode)) std::ignore = file.release();
}

/// realpath(3) of a path; nothing, with errno, when it fails.
std::optional<std::string> resolvePath(const std::string& path)
{
    std::array<char, PATH_MAX> buffer{};
    if (!realpath(path.c_str(), buffer.data())) return std::nullopt;
    return buffer.data();
}

/// Of a link, the link counts.
bool isDirectoryItself(const std::string& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) raiseReadError(toWide(path));
    return S_ISDIR(status.st_mode);
}

/// Nothing is ever created directly below these (required).
bool isTopLevel(std::string_view directory)
{
    return directory == "." || directory.find_first_not_of('/') == std::string_view::npos;
}

/// Lengths of those prefixes of `path` that name a directory to create: its
/// parents, topmost first, and itself; none at the top level. A loop, since a
/// path from the command line may have more levels than the stack has room.
std::vector<std::size_t> prefixesToCreate(const std::string& path)
{
    std::vector<std::size_t> lengths;
    std::string rest = path;
    while (true) {
        const std::size_t length = rest.size();
        const char* const parent = dirname(rest.data());  // cuts `rest` in its place
        if (isTopLevel(parent)) break;
        lengths.push_back(length);
        rest.resize(std::strlen(parent));
    }
    std::reverse(lengths.begin(), lengths.end());
    return lengths;
}

}  // namespace

void LinuxFileUtils::createDirectories(const std::wstring& path) const
{
    const std::string bytePath = toUtf8(path);
    for (const std::size_t length : prefixesToCreate(bytePath)) {
        const std::string directory = bytePath.substr(0, length);
        const std::wstring wideDirectory = toWide(directory);
        if (fileExists(wideDirectory)) continue;
        const TrustedPath place(directory.substr(0, directory.find_last_not_of('/') + 1),
                                TrustedPath::LastLink::Keep);
        if (place.makeDirectory() != 0 && errno != EEXIST) {
            raiseError(IDS_UNABLE_TO_RESOLVE_PATH, wideDirectory);
        }
    }
}

void LinuxFileUtils::createParentDirectories(const std::wstring& path) const
{
    const std::size_t separator = path.rfind(getDirectorySeparator());
    if (separator != std::wstring::npos) createDirectories(path.substr(0, separator));
}

std::wstring LinuxFileUtils::touchFile(const std::wstring& path) const
{
    const std::string bytePath = toUtf8(path);
    for (int tries = 0; tries < kMaxTouches; ++tries) {
        FileDescriptor file =
            TrustedPath(bytePath).open(O_WRONLY | O_APPEND | O_CREAT, kOutputFileMode);
        if (!file.isOpen()) raiseReadError(path);
        const std::optional<std::string> resolved = resolvePath(bytePath);
        if (resolved && leadsTo(*resolved, file)) {
            keepPipeOpen(std::move(file));
            return toWide(*resolved);
        }
        if (!resolved && errno != ENOENT) break;
        // Another launcher has renamed a log just now; or somebody exchanges links.
        if (resolved) errno = ELOOP;
    }
    raiseError(IDS_UNABLE_TO_CONVERT_PATH_TO_ABS, path);
}

std::wstring LinuxFileUtils::getAbsolutePath(const std::wstring& path) const
{
    const std::optional<std::string> resolved = resolvePath(toUtf8(path));
    if (!resolved) raiseError(IDS_UNABLE_TO_CONVERT_PATH_TO_ABS, path);
    return toWide(*resolved);
}

std::wstring LinuxFileUtils::getParentDirectory(const std::wstring& path) const
{
    const std::size_t separator = path.rfind(getDirectorySeparator());
    if (separator == std::wstring::npos || separator == 0) {
        throw LauncherOsException(formatMessage(IDS_CANNOT_GET_PARENT_DIR, path));
    }
    return path.substr(0, separator);
}

BinaryType LinuxFileUtils::getBinaryType(const std::wstring& path) const
{
    std::array<unsigned char, kElfIdentSize> ident{};
    const std::size_t size = fread(ident.data(), 1, ident.size(), openForReading(path).get());
    if (size < ident.size() || std::memcmp(ident.data(), "\177ELF", 4) != 0) {
        throw LauncherOsException(formatMessage(IDS_DLL_NOT_ELF, path));
    }
    switch (ident[kElfClassIndex]) {
        case 1:
            return BinaryType::Elf32;
        case 2:
            return BinaryType::Elf64;
        default:
            throw LauncherOsException(formatMessage(IDS_DLL_UNKNOWN_BINTYPE, path));
    }
}

bool LinuxFileUtils::fileExists(const std::wstring& path) const
{
    struct stat status {};
    const std::string bytePath = toUtf8(path);
    if (stat(bytePath.c_str(), &status) == 0) return true;
    if (errno != ENOENT) raiseReadError(path);
    return false;
}

bool LinuxFileUtils::isDirectory(const std::wstring& path) const
{
    struct stat status {};
    return stat(toUtf8(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool LinuxFileUtils::deleteFile(const std::wstring& path) const
{
    const std::string bytePath = toUtf8(path);
    if (TrustedPath(bytePath, TrustedPath::LastLink::Keep).unlink() == 0) return true;
    // A start that fails of that must leave nothing behind all the same.
    const bool hasNoDescriptors = errno == EMFILE;
    if (hasNoDescriptors && ::unlink(bytePath.c_str()) == 0) return true;
    const int unlinkErrno = errno;
    if (unlinkErrno == ENOENT) return false;
    const std::wstring error = lastErrorText();
    const LauncherOsException failure(formatMessage(IDS_CANNOT_DELETE_FILE, path, error));
    errno = unlinkErrno;
    throw failure;
}

std::shared_ptr<FileContent> LinuxFileUtils::readFile(const std::wstring& path) const
{
    const FileHandle file = openForReading(path);
    struct stat status {};
    if (stat(toUtf8(path).c_str(), &status) != 0) raiseReadError(path);
    if (status.st_size > kMaximalFileSize) {
        throw LauncherOsException(formatMessage(IDS_FILE_TOO_BIG, path));
    }
    auto content = std::make_shared<FileContent>(path, static_cast<std::uint32_t>(status.st_size));
    if (fread(content->data(), 1, content->size(), file.get()) != content->size()) {
        if (feof(file.get())) errno = ENODATA;  // it shrank meanwhile: no call has failed
        raiseReadError(path);
    }
    return content;
}

void LinuxFileUtils::writeFile(const void* data, std::uint32_t size, const std::wstring& path) const
{
    FileHandle file = openForWriting(path);
    // A full disk shows when the buffer is written.
    if (fwrite(data, 1, size, file.get()) != size || fflush(file.get()) != 0 ||
        fclose(file.release()) != 0) {
        raiseError(IDS_FILE_WRITE_ERROR, path);
    }
}

std::vector<std::wstring> LinuxFileUtils::listFiles(const std::wstring& directory,
                                                    const std::wstring& mask) const
{
    std::wstring slashed = directory;
    std::replace(slashed.begin(), slashed.end(), L'\\', L'/');
    const std::wstring shownMask = slashed + mask;
    if (!isDirectory(slashed)) return {};

    std::optional<std::string> prefix = resolvePath(toUtf8(slashed));
    if (!prefix) raiseReadError(slashed);
    if (prefix->back() != '/') *prefix += '/';
    const NameMask nameMask(toUtf8(mask));
    if (!nameMask.isValid()) raiseReadError(shownMask);
    DirHandle entries(*prefix);
    if (!entries.isOpen()) {
        if (errno == ENOENT) return {};
        raiseReadError(shownMask);
    }

    std::vector<std::wstring> files;
    std::string file = *prefix;
    while (const char* const name = entries.nextName()) {
        file.replace(prefix->size(), std::string::npos, name);
        if (isDirectoryItself(file)) continue;
        if (nameMask.matches(name)) {
            files.push_back(toWide(file));
        } else if (errno != 0) {
            raiseReadError(toWide(file));  // the class path would lack it
        }
    }
    if (errno != 0) raiseReadError(shownMask);  // or these
    return files;
}
