// StopRequestClient: stops another launcher, and tells at a start whether one
// is still running. Holds the process id of the other launcher. One thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "SimpleOptional.h"

class IConsole;

class StopRequestClient {
public:
    /// How a request to a process ended.
    enum Result : int { NotFound = 0, Stopped = 1, StillRunning = 2, Killed = 3, NotPermitted = 4 };
    /// What became of the PID file of a launcher that was killed.
    enum Cleanup : int { NotAccessible = 0, Removed = 1, Failed = 2 };

    explicit StopRequestClient(std::int32_t pid) : pid_(pid) {}

    [[nodiscard]] virtual bool isProcessRunning() const = 0;
    virtual ~StopRequestClient() = default;
    /// Arguments of the process; none when they cannot be read.
    [[nodiscard]] virtual std::vector<std::wstring> getCommandLine() const = 0;
    /// Stopped when the signal was delivered.
    virtual Result sendStopSignal(bool fast) = 0;
    /// Killed, or StillRunning when that failed.
    virtual Result terminateProcess() = 0;
    /// The directory that the process works in; empty when it cannot be told.
    [[nodiscard]] virtual std::wstring getWorkingDirectory() const { return {}; }

    /// Stop mode: asks the process to stop, waits for its end, kills it after
    /// the time-out (milliseconds) if one is given, and writes the outcome to
    /// the console's standard error. An empty `pidFilePath` is replaced by the
    /// one on the process's command line. Gives the exit status.
    [[nodiscard]] int stop(const std::wstring& pidFilePath,
                           const SimpleOptional<std::uint64_t>& timeoutMillis, bool fast,
                           IConsole& console);

    // The steps of stop().

    /// Sends the stop signal and waits for the end of the process; kills it when
    /// a time-out (milliseconds) is given and has run out.
    [[nodiscard]] static Result askToStop(StopRequestClient& client,
                                          const SimpleOptional<std::uint64_t>& timeoutMillis,
                                          bool fast);
    /// Stopped, or StillRunning after `timeoutMillis`.
    [[nodiscard]] static Result waitForTermination(const StopRequestClient& client,
                                                   std::uint64_t timeoutMillis);
    /// The PID file named on the command line of the process, as it reads from
    /// here; empty when there is none or that cannot be told.
    [[nodiscard]] static std::wstring getPidFilePath(const StopRequestClient& client);
    /// Removes the PID file of a launcher that has ended. With `endedPid`, its
    /// process id: a file that does not hold it is another's, and not accessible.
    [[nodiscard]] static Cleanup cleanupPidFileAfterClientShutdown(
        const std::wstring& path, std::optional<std::int32_t> endedPid = {});

    /// Start mode: throws LauncherException IDS_PIDFILE_EXISTS_PROCESS_RUNNING
    /// when a process named by the PID file runs; deletes a file that is stale
    /// or no PID file, or throws IDS_PIDFILE_CANNOT_BE_DELETED (both code 3).
    /// Nothing to check for an empty path.
    static void checkClientLauncherIsNotRunning(const std::wstring& pidFilePath);

    [[nodiscard]] std::int32_t pid() const { return pid_; }

private:
    std::int32_t pid_;
};
