#include "StopRequestClient.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <sstream>

#include "FileLock.h"
#include "IConsole.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "PidFile.h"
#include "SpecialFile.h"
#include "TextConversion.h"

namespace {

using Result = StopRequestClient::Result;
using Cleanup = StopRequestClient::Cleanup;

constexpr wchar_t kClass[] = L"StopRequestClient";
constexpr std::wstring_view kPidFileOption = L"--pidfile";
constexpr std::wstring_view kPidFileOptionJoined = L"--pidfile=";
constexpr std::uint64_t kPollMillis = 100;
constexpr std::uint64_t kForever = std::numeric_limits<std::uint64_t>::max();

constexpr int kExitStopped = 0;
constexpr int kExitNotFound = 11;
constexpr int kExitStillRunning = 12;

/// The value of "--pidfile" among the arguments, in either form; empty when
/// there is none.
std::wstring findPidFileArgument(const std::vector<std::wstring>& arguments)
{
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (argument->starts_with(kPidFileOptionJoined)) {
            return argument->substr(kPidFileOptionJoined.size());
        }
        if (*argument != kPidFileOption) continue;
        const auto value = argument + 1;
        return value == arguments.end() ? std::wstring() : *value;
    }
    return {};
}

/// A PID file named on the command line of the client's process, as it reads
/// from here; empty when that cannot be told.
std::wstring pidFileSeenByProcess(const StopRequestClient& client, const std::wstring& path)
{
    if (path.empty() || path.front() == L'/') return path;
    // Relative to where the process was started, which it may have left since:
    // a file that does not hold its id is some other's.
    std::wstring there = client.getWorkingDirectory();
    there.append(L"/").append(path);
    for (const std::wstring& seen : {there, path}) {
        if (PidFile().holds(seen, client.pid())) return seen;
    }
    return {};
}

/// Whether the launcher that has written the PID file, from which `pid` was read,
/// is gone for certain, so that the id may be another process's: the file is no
/// longer there, or is older than the process.
bool isGone(const std::wstring& pidFilePath, std::int32_t pid)
{
    if (pidFilePath.empty()) return false;
    return !PidFile().mayExist(pidFilePath) || PidFile().isOlderThanProcess(pidFilePath, pid);
}

/// Stops the client's process, unless the PID file, where its id is from, speaks
/// against that. An empty `pidFilePath` does not.
Result stopUnlessForbidden(StopRequestClient& client, const std::wstring& pidFilePath,
                           const SimpleOptional<std::uint64_t>& timeoutMillis, bool fast)
{
    if (isGone(pidFilePath, client.pid())) return Result::NotFound;
    std::optional<std::wstring> reason;
    if (!pidFilePath.empty()) reason = PidFile().reasonToDistrust(pidFilePath, client.pid());
    if (!reason) return StopRequestClient::askToStop(client, timeoutMillis, fast);
    if (!client.isProcessRunning()) return Result::NotFound;
    logWarn({kClass, L"stop"}, L"PID file does not count", L"pidFilePath", pidFilePath, L"pid",
            client.pid(), L"reason", *reason);
    return Result::NotPermitted;
}

/// What is told about the PID file of a launcher that was killed.
std::wstring cleanUpAndDescribe(const std::wstring& pidFilePath, std::int32_t pid)
{
    if (pidFilePath.empty()) return {};
    switch (StopRequestClient::cleanupPidFileAfterClientShutdown(pidFilePath, pid)) {
        case Cleanup::Removed:
            return getMessage(IDS_PIDFILE_WAS_REMOVED);
        case Cleanup::Failed:
            return getMessage(IDS_PIDFILE_FAILED_TO_REMOVE);
        case Cleanup::NotAccessible:
            break;
    }
    return {};
}

/// The process id in a PID file, or -1 with the reason in `formatError`. Looks
/// a second time before it raises that the file cannot be read: what it names
/// may be running, and a failure be of the moment.
std::int32_t readPid(const std::wstring& path, std::wostream& formatError)
{
    try {
        return PidFile().read(path, formatError);
    } catch (const LauncherException&) {
        return PidFile().read(path, formatError);
    }
}

/// The process id in a PID file that an earlier launcher left; nothing, and a
/// record of the reason, when the file tells none.
std::optional<std::int32_t> readOldPidFile(const std::wstring& path)
{
    constexpr wchar_t kMethod[] = L"checkClientLauncherIsNotRunning";
    std::wostringstream formatError;
    try {
        const std::int32_t pid = readPid(path, formatError);
        if (pid != -1) return pid;
        logInfo({kClass, kMethod}, L"PID-file exists and has unsupported format, delete it",
                L"formatError", formatError.str());
    } catch (const LauncherException&) {
        logInfo({kClass, kMethod}, L"PID-file access error, delete it");
    }
    return std::nullopt;
}

}  // namespace

int StopRequestClient::stop(const std::wstring& pidFilePath,
                            const SimpleOptional<std::uint64_t>& timeoutMillis, bool fast,
                            IConsole& console)
{
    // To be asked while the process still is there.
    const std::wstring pidFile = pidFilePath.empty() ? getPidFilePath(*this) : pidFilePath;
    switch (stopUnlessForbidden(*this, pidFilePath, timeoutMillis, fast)) {
        case Result::NotFound:
            console.writeErrorLine(formatMessage(IDS_LAUNCHER_NOT_FOUND_NOTHING_STOPPED, pid_));
            return kExitNotFound;
        case Result::Stopped:
            console.writeErrorLine(formatMessage(IDS_LAUNCHER_STOPPED_GRACEFULLY, pid_));
            return kExitStopped;
        case Result::StillRunning:
            console.writeErrorLine(formatMessage(IDS_LAUNCHER_KILL_ERROR, pid_));
            return kExitStillRunning;
        case Result::Killed:
            console.writeErrorLine(formatMessage(IDS_LAUNCHER_KILLED, pid_) +
                                   cleanUpAndDescribe(pidFile, pid_));
            return kExitStopped;
        case Result::NotPermitted:
            console.writeErrorLine(formatMessage(IDS_LAUNCHER_SIGNAL_PERM_ERROR, pid_));
            return kExitStillRunning;
    }
    return static_cast<int>(exit_code::kInternal);
}

Result StopRequestClient::askToStop(StopRequestClient& client,
                                    const SimpleOptional<std::uint64_t>& timeoutMillis, bool fast)
{
    const Result sent = client.sendStopSignal(fast);
    if (sent != Result::Stopped && sent != Result::StillRunning) return sent;

    const std::uint64_t patience = timeoutMillis.isPresent() ? timeoutMillis.value() : kForever;
    const Result waited = waitForTermination(client, patience);
    if (waited != Result::StillRunning) return waited;
    if (!timeoutMillis.isPresent()) {
        logInfo({kClass, L"askToStop"}, L"Stopping process is still running");
        return waited;
    }
    // It may have ended since the last poll, while we slept.
    return client.isProcessRunning() ? client.terminateProcess() : Result::Stopped;
}

Result StopRequestClient::waitForTermination(const StopRequestClient& client,
                                             std::uint64_t timeoutMillis)
{
    const IProcessUtils& processes = getOsUtilsFactory().getProcessUtils();
    for (std::uint64_t elapsed = 0; elapsed < timeoutMillis;
         elapsed += std::min(kPollMillis, timeoutMillis - elapsed)) {
        if (!client.isProcessRunning()) {
            logInfo({kClass, L"waitForTermination"}, L"Asked process to stop gracefully");
            return Result::Stopped;
        }
        // On every pass; required.
        logInfo({kClass, L"waitForTermination"}, L"Waiting for process to stop",
                L"millisecondsElapsed", elapsed);
        processes.sleepMilliseconds(kPollMillis);
    }
    return Result::StillRunning;
}

std::wstring StopRequestClient::getPidFilePath(const StopRequestClient& client)
{
    std::wstring path = pidFileSeenByProcess(client, findPidFileArgument(client.getCommandLine()));
    if (path.empty()) {
        logInfo({kClass, L"getPidFilePath"}, L"Cannot read pid file path of another instance");
    } else {
        logInfo({kClass, L"getPidFilePath"},
                L"A path to a pid file of another instance is obtained", L"pidFilePath", path);
    }
    return path;
}

Cleanup StopRequestClient::cleanupPidFileAfterClientShutdown(const std::wstring& path,
                                                             std::optional<std::int32_t> endedPid)
{
    constexpr wchar_t kMethod[] = L"cleanupPidFileAfterClientShutdown";
    const IFileUtils& files = getOsUtilsFactory().getFileUtils();
    const FileLock lock(path, FileLock::Missing::Leave);
    try {
        bool isThere = !lock.foundNoFile() && files.fileExists(path);
        if (isThere && files.isDirectory(path)) {
            logInfo({kClass, kMethod}, getMessage(IDS_PIDFILE_OF_ANOTHER_IS_DIRECTORY));
            return Cleanup::Failed;
        }
        if (isThere && isSpecialFile(toUtf8(path))) {
            logError({kClass, kMethod}, L"Failed to remove pid file", L"exception",
                     L"not a regular file");
            return Cleanup::Failed;
        }
        if (isThere && endedPid) isThere = PidFile().removeIfItHolds(path, *endedPid);
        if (isThere && !endedPid) isThere = files.deleteFile(path);
        if (!isThere) {
            logInfo({kClass, kMethod}, L"PID-file of another instance is not accessible",
                    L"pidFilePath", path);
            return Cleanup::NotAccessible;
        }
        logInfo({kClass, kMethod}, getMessage(IDS_PIDFILE_OF_ANOTHER_WAS_REMOVED));
        return Cleanup::Removed;
    } catch (const LauncherException& e) {
        logError({kClass, kMethod}, L"Failed to remove pid file", L"exception", e.message());
        return Cleanup::Failed;
    }
}

void StopRequestClient::checkClientLauncherIsNotRunning(const std::wstring& pidFilePath)
{
    constexpr wchar_t kMethod[] = L"checkClientLauncherIsNotRunning";
    if (pidFilePath.empty()) return;
    logInfo({kClass, kMethod}, L"Checking prerequisites before start", L"pidFilePath", pidFilePath);
    const FileLock lock(pidFilePath, FileLock::Missing::Leave);
    if (lock.foundNoFile() || !PidFile().mayExist(pidFilePath)) {
        logInfo({kClass, kMethod}, L"Old PID-file is absent");
        return;
    }
    if (const std::optional<std::int32_t> pid = readOldPidFile(pidFilePath)) {
        if (PidFile().isOwnedBy(pidFilePath, *pid)) {
            throw LauncherException(exit_code::kPidFile,
                                    getMessage(IDS_PIDFILE_EXISTS_PROCESS_RUNNING));
        }
        logInfo({kClass, kMethod},
                L"Process referenced in PID-file is not running, delete old PID-file");
    }
    if (const std::optional<std::wstring> error = PidFile().remove(pidFilePath)) {
        throw LauncherException(exit_code::kPidFile,
                                formatMessage(IDS_PIDFILE_CANNOT_BE_DELETED, pidFilePath, *error));
    }
}
