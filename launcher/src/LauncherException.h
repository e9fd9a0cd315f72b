// LauncherException: a failure that ends a run of the launcher.
// Carries the complete text for the user, already localized, and the status
// that the process ends with; both are chosen where the failure is raised.
// Thrown by value, caught by const reference. Deliberately no std::exception:
// a handler that must see both kinds catches both.
#pragma once

#include <cstdint>
#include <string>

/// The process exit codes by area. The raiser of a failure chooses.
namespace exit_code {
inline constexpr std::uint32_t kUnreadablePidFile = 0;  ///< the stop target cannot be told
inline constexpr std::uint32_t kCommandLine = 1;
inline constexpr std::uint32_t kConfiguration = 2;
inline constexpr std::uint32_t kPidFile = 3;
inline constexpr std::uint32_t kJavaLocation = 4;
inline constexpr std::uint32_t kJavaInvocation = 5;
inline constexpr std::uint32_t kJavaVersion = 6;
inline constexpr std::uint32_t kInterfaceClass = 7;
inline constexpr std::uint32_t kStartMethod = 8;
inline constexpr std::uint32_t kStopMethod = 9;
inline constexpr std::uint32_t kLogFile = 10;
inline constexpr std::uint32_t kOperatingSystem = 20;
inline constexpr std::uint32_t kInternal = 21;
}  // namespace exit_code

class LauncherException {
public:
    LauncherException(std::uint32_t exitCode, std::wstring message);
    /// An internal error: exit code 21.
    explicit LauncherException(std::wstring message);
    LauncherException(const LauncherException&) = default;
    LauncherException& operator=(const LauncherException&) = default;
    virtual ~LauncherException();

    [[nodiscard]] const std::wstring& message() const { return message_; }
    [[nodiscard]] std::uint32_t exitCode() const { return exitCode_; }

private:
    std::wstring message_;
    std::uint32_t exitCode_;
};
