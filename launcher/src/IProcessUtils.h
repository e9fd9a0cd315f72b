// IProcessUtils: this process, its arguments and its environment.
// Stateless, from any thread. Failures raise LauncherOsException (code 20).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class IProcessUtils {
public:
    /// The arguments of this process from "/proc/self/cmdline". Raises
    /// IDS_CANNOT_GET_COMMAND_LINE_ARGS.
    [[nodiscard]] virtual std::vector<std::wstring> getCommandLine() const = 0;
    /// main()'s arguments, from UTF-8.
    [[nodiscard]] virtual std::vector<std::wstring> argumentsToList(
        int argc, const char* const* argv) const = 0;
    [[nodiscard]] virtual std::vector<std::wstring> argumentsToList(
        int argc, const wchar_t* const* argv) const = 0;
    [[nodiscard]] virtual std::int32_t getCurrentProcessId() const = 0;
    /// Path of the running executable; empty when it cannot be told.
    [[nodiscard]] virtual std::wstring getExecutablePath() const = 0;
    /// Raises IDS_UNABLE_TO_CONVERT_PATH_TO_ABS.
    [[nodiscard]] virtual std::wstring getExecutableDirectory() const = 0;
    /// Raises IDS_CANNOT_CWD.
    virtual void changeCurrentDirectory(const std::wstring& path) const = 0;
    /// One nanosleep(2). Sleeps for less than 1,000 ms only: the system
    /// rejects more, and the call then returns at once. Not resumed after a
    /// signal.
    virtual void sleepMilliseconds(std::uint64_t milliseconds) const = 0;
    /// Empty when unset.
    [[nodiscard]] virtual std::wstring getEnvironmentVariable(const std::wstring& name) const = 0;
    virtual ~IProcessUtils() = default;
};
