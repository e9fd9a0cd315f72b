#include "LinuxFileLogger.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "DirHandle.h"
#include "FileDescriptor.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "LastErrorText.h"
#include "LauncherException.h"
#include "LocalTimeText.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "SpecialFile.h"
#include "TextConversion.h"
#include "TrustedPath.h"

namespace {

constexpr std::int64_t kForever = -1;
constexpr int kMaxLostRaces = 100;
constexpr std::size_t kTypicalRecordSize = 256;  ///< without its message

// Serialises writing, flushing and closing for all loggers of the process.
std::timed_mutex logMutex;
std::atomic<std::int64_t> waitLimitMillis{kForever};

/// Takes the log mutex; without it when a limit is set and has run out.
std::unique_lock<std::timed_mutex> lockLog()
{
    const std::int64_t limit = waitLimitMillis.load(std::memory_order_relaxed);
    if (limit == kForever) return std::unique_lock(logMutex);
    return std::unique_lock(logMutex, std::chrono::milliseconds(limit));
}

[[noreturn]] void raiseCreationError(const std::wstring& path)
{
    const std::wstring error = lastErrorText();
    throw LauncherException(exit_code::kLogFile,
                            formatMessage(IDS_FILE_CREATION_ERROR, path, error));
}

/// The number of a rotated log: what stands one character behind `baseName`,
/// whatever that character is (meant to be the dot; required). Nothing for
/// other names; 0 for the log itself and for no digits at all.
std::optional<std::int64_t> rotationNumber(const std::string& name, std::string_view baseName)
{
    if (name == baseName) return 0;
    if (name.size() <= baseName.size() || name.compare(0, baseName.size(), baseName) != 0) {
        return std::nullopt;
    }
    const char* digits = name.c_str() + baseName.size() + 1;
    char* end = nullptr;
    const auto number = static_cast<std::int64_t>(std::strtoull(digits, &end, 10));
    if (*end != '\0') return std::nullopt;
    return number;
}

/// What the log's directory holds of it.
struct RotationState {
    bool logExists = false;
    bool logWasSeen = false;  ///< itself, not what only counts as it
    std::int64_t highestNumber = 0;
};

RotationState readRotationState(const std::wstring& path, const std::string& directory,
                                std::string_view baseName)
{
    DirHandle entries(directory);
    if (!entries.isOpen()) raiseCreationError(path);
    RotationState state;
    while (const char* const name = entries.nextName()) {
        const std::optional<std::int64_t> number = rotationNumber(name, baseName);
        if (!number) continue;
        // 0 counts as the log itself, also for a bare "log." (required).
        if (*number == 0) state.logExists = true;
        if (name == baseName) state.logWasSeen = true;
        state.highestNumber = std::max(state.highestNumber, *number);
    }
    if (errno != 0) raiseCreationError(path);  // an unseen log could be overwritten
    return state;
}

/// Whose a file is, and who may use it.
struct Ownership {
    uid_t user;
    gid_t group;
    mode_t mode;
};

/// Of the log at `path`, when it is another user's and this one is root. In a
/// directory where others than that user may create files it says nothing: a
/// stranger may have planted it, to read what root logs.
std::optional<Ownership> foreignOwnership(const std::string& path, const std::string& directory)
{
    struct stat file {};
    struct stat place {};
    const bool isForeign = geteuid() == 0 && lstat(path.c_str(), &file) == 0 &&
                           S_ISREG(file.st_mode) && file.st_uid != geteuid();
    if (!isForeign || stat(directory.c_str(), &place) != 0) return std::nullopt;
    const bool isOfRootAlone = place.st_uid == 0 && (place.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    if (place.st_uid != file.st_uid && !isOfRootAlone) return std::nullopt;
    return Ownership{file.st_uid, file.st_gid, file.st_mode & kOutputFileMode};
}

/// The new log, where there is none: EEXIST otherwise. With `owner` for the user
/// whose log was renamed, who could not write to one of root's: as `create` of
/// logrotate(8).
FileHandle createLog(const TrustedPath& place, const std::optional<Ownership>& owner)
{
    const mode_t mode = owner ? owner->mode : kOutputFileMode;
    FileDescriptor file = place.open(O_RDWR | O_APPEND | O_CREAT | O_EXCL, mode);
    if (file.isOpen() && owner && fchown(file.get(), owner->user, owner->group) == 0) {
        fchmod(file.get(), mode);  // past the umask
    }
    return toStream(std::move(file), "a+b");
}

/// Renames the log at `place` to the next number. With `mayRetry` false when another
/// launcher, started at the same time, has just taken the number or renamed the log.
bool tryRotate(const std::wstring& path, const TrustedPath& place, const RotationState& state,
               bool mayRetry)
{
    const std::string bytePath = toUtf8(path);
    constexpr std::int64_t kLastNumber = std::numeric_limits<std::int64_t>::max();
    const std::int64_t next = std::min(state.highestNumber, kLastNumber - 1) + 1;
    std::array<char, 4096> target{};
    const int length =
        std::snprintf(target.data(), target.size(), "%s.%ld", bytePath.c_str(), next);
    if (length >= 1) {
        const std::string name = std::string(target.data()).substr(bytePath.rfind('/') + 1);
        if (place.renameToFree(name) == 0) return true;
        const bool lostRace = errno == EEXIST || (errno == ENOENT && state.logWasSeen);
        if (lostRace && mayRetry) return false;
    }
    const std::wstring error = lastErrorText();
    throw LauncherException(exit_code::kLogFile, formatMessage(IDS_CANNOT_ROTATE_LOG, path,
                                                               toWide(target.data()), error));
}

/// Renames the log if there is one. Gives the ownership that the new one should
/// have, when it is not ours.
std::optional<Ownership> rotateExistingLog(const std::wstring& path, const TrustedPath& place)
{
    const std::string bytePath = toUtf8(path);
    const std::size_t separator = bytePath.find_last_of("/\\");
    const bool bare = separator == std::string::npos;
    // The directory of "/name" is the root, though nothing stands before its '/'.
    const std::string directory = bare ? "." : bytePath.substr(0, separator == 0 ? 1 : separator);
    const std::string baseName = bare ? bytePath : bytePath.substr(separator + 1);
    for (int triesLeft = kMaxLostRaces;; --triesLeft) {
        const RotationState state = readRotationState(path, directory, baseName);
        if (!state.logExists) return std::nullopt;
        const std::optional<Ownership> owner = foreignOwnership(bytePath, directory);
        if (tryRotate(path, place, state, triesLeft > 0)) return owner;
    }
}

/// Null, with errno, when it cannot be made. What cannot be renamed stays where it is,
/// and is added to: a device; a pipe, which its writer must not read; the longest
/// path, which has no room for a number; a directory, which fails.
FileHandle makeLog(const std::wstring& path)
{
    const std::string bytePath = toUtf8(path);
    const bool isLongest = bytePath.size() >= PATH_MAX - 1;
    if (isLongest || isSpecialFile(bytePath) ||
        getOsUtilsFactory().getFileUtils().isDirectory(path)) {
        constexpr int kAdd = O_WRONLY | O_APPEND | O_CREAT;
        return toStream(TrustedPath(bytePath).open(kAdd, kOutputFileMode), "ab");
    }
    const TrustedPath place(bytePath, TrustedPath::LastLink::Keep);
    FileHandle log;
    // A file that is there again is another's, which started at the same time.
    for (int tries = 0; !log && (tries == 0 || errno == EEXIST) && tries < kMaxLostRaces; ++tries) {
        log = createLog(place, rotateExistingLog(path, place));
    }
    return log;
}

thread_local pid_t threadId = 0;  // until the thread asks for it

/// gettid(2), but each thread asks the kernel only once: that takes as long as a
/// third of a record.
pid_t currentThreadId()
{
    // The child of a fork has one thread, under another id.
    static const bool childAsksAnew = pthread_atfork(nullptr, nullptr, [] { threadId = 0; }) == 0;
    if (threadId == 0 || !childAsksAnew) threadId = gettid();
    return threadId;
}

/// Whether an error of writing, which is forgotten, has cut the last line of
/// the file.
bool endsWithinLine(FILE* stream)
{
    clearerr(stream);
    if (fseek(stream, -1, SEEK_END) != 0) return false;
    const int last = fgetc(stream);
    fseek(stream, 0, SEEK_END);  // see fopen(3): between reading and writing
    return last != '\n' && last != EOF;
}

std::wstring_view orEmpty(const wchar_t* text)
{
    return text ? text : L"";
}

std::wstring_view lastComponent(std::wstring_view path)
{
    const auto isSeparator = [](wchar_t c) { return c == L'/' || c == L'\\'; };
    return {std::find_if(path.rbegin(), path.rend(), isSeparator).base(), path.end()};
}

}  // namespace

LinuxFileLogger::LinuxFileLogger(const std::wstring& path, std::int32_t pid)
    : stream_(makeLog(path)), pid_(pid)
{
    if (!stream_) raiseCreationError(path);
}

LinuxFileLogger::~LinuxFileLogger()
{
    close();
    sync();
}

void LinuxFileLogger::log(const std::wstring& level, const wchar_t* className, const wchar_t* file,
                          std::int32_t line, const wchar_t* func, const std::wstring& message)
{
    std::string text;
    text.reserve(kTypicalRecordSize + message.size());
    appendLocalTime(text);
    text.append(",SYSTEM,0,level=");
    appendUtf8(level, text);
    text.append(",pid=").append(std::to_string(pid_));
    text.append(",tid=").append(std::to_string(currentThreadId()));
    text.append(",component=launcher,class=");
    appendUtf8(orEmpty(className), text);
    text.append(",file=");
    appendUtf8(lastComponent(orEmpty(file)), text);
    text.append(",line=").append(std::to_string(line));
    text.append(",func=");
    appendUtf8(orEmpty(func), text);
    text.append(",message=");
    appendUtf8(message, text);
    text += '\n';

    const std::unique_lock lock = lockLog();
    if (!lock || !stream_) return;
    if (ferror(stream_.get()) && endsWithinLine(stream_.get())) text.insert(text.begin(), '\n');
    fwrite(text.data(), 1, text.size(), stream_.get());
}

void LinuxFileLogger::flush()
{
    const std::unique_lock lock = lockLog();
    if (lock && stream_) fflush(stream_.get());
}

void LinuxFileLogger::close()
{
    const std::unique_lock lock = lockLog();
    if (lock) stream_.reset();
}

void LinuxFileLogger::sync() const
{
    // The whole system's buffers: the log must reach the disk even when the
    // machine goes down with the service.
    ::sync();
}

void LinuxFileLogger::limitWaits(std::chrono::milliseconds patience)
{
    waitLimitMillis.store(patience.count(), std::memory_order_relaxed);
}
