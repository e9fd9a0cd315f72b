// LauncherParameters: the settings that a run works with, merged from the
// command line, the service's ini file, launcher.yml and the environment. Built
// once by main on the main thread, immutable afterwards. The constructor never
// throws a LauncherException: problems are kept as texts, for main to print.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SimpleOptional.h"

class IJavaFinder;
class IJavaLibResolver;
class IServiceInstanceParameters;
class LauncherCliArgs;
class LauncherConfig;

class LauncherParameters final {
public:
    /// `cliArgs` and `config` must outlive the object; the others are used
    /// during construction only. In start mode creates the working directory if
    /// it is missing, and asks `javaFinder` if nothing names a Java.
    LauncherParameters(const LauncherCliArgs& cliArgs,
                       const IServiceInstanceParameters& serviceInstance,
                       const LauncherConfig& config, const IJavaLibResolver& javaLibResolver,
                       IJavaFinder& javaFinder);

    [[nodiscard]] bool isStartMode() const;
    [[nodiscard]] bool isStopMode() const;

    // Start mode.
    [[nodiscard]] const std::wstring& getJavaHome() const { return javaHome_; }
    [[nodiscard]] const std::wstring& getJvmLibraryPath() const { return jvmLibraryPath_; }
    /// Absolute, or empty when none is set.
    [[nodiscard]] const std::wstring& getWorkDir() const { return workDir_; }
    [[nodiscard]] const std::vector<std::wstring>& getJvmOptions() const { return jvmOptions_; }
    [[nodiscard]] const std::vector<std::wstring>& getMainClassArguments() const
    {
        return mainClassArguments_;
    }
    [[nodiscard]] std::wstring getClassPath() const;
    [[nodiscard]] std::wstring getModulePath() const;
    /// The interface class as given, "package.Class".
    [[nodiscard]] std::wstring getMainClass() const;
    [[nodiscard]] std::wstring getInstanceRoot() const;
    [[nodiscard]] const std::wstring& getProcName() const;
    [[nodiscard]] bool isQuiet() const;
    [[nodiscard]] bool isDaemon() const;
    /// Lowest feature version of Java that the application accepts.
    [[nodiscard]] std::int32_t getMinimalJavaVersion() const;
    /// The text that launcher.yml has for the user's language: that of the JVM
    /// options, else of the environment, else the default one. Empty when it
    /// has none. On the main thread: it asks for the locale.
    [[nodiscard]] std::wstring getUserStartupMessage() const;

    // Both modes.
    [[nodiscard]] std::wstring getPidFile() const;

    // Stop mode.
    /// -1 when it could not be told.
    [[nodiscard]] std::int32_t getPidToStop() const { return pidToStop_; }
    [[nodiscard]] const SimpleOptional<std::uint64_t>& getTimeout() const;
    [[nodiscard]] bool isFast() const;

    [[nodiscard]] bool hasErrors() const;
    /// The texts of all problems, on a line each.
    [[nodiscard]] const std::wstring& getErrors() const { return errors_; }
    /// The code of the configuration's error, if there is one. Else that of the
    /// last failure that was caught; 0 when none was, also where problems were found
    /// without one.
    [[nodiscard]] std::uint32_t getErrorCode() const;
    void logState() const;

private:
    void collectForStop();
    void collectForStart(const IServiceInstanceParameters& serviceInstance,
                         const IJavaLibResolver& javaLibResolver, IJavaFinder& javaFinder);
    /// Empty, with an error recorded, when no source names one.
    std::wstring detectJavaHome(const IServiceInstanceParameters& serviceInstance,
                                IJavaFinder& javaFinder);
    void composeJvmOptions(const IServiceInstanceParameters& serviceInstance);
    /// -1, with an error recorded, when it cannot be told. Throws as
    /// readPidFromFile().
    std::int32_t detectPidToStop();
    /// -1, with an error recorded, for content that is no PID: stricter than
    /// PidFile::read(), digits only, but one more of them. Throws
    /// LauncherException when the file cannot be read (code 0) or is bigger than
    /// any file that is read whole (20).
    std::int32_t readPidFromFile(const std::wstring& path);
    /// Logs the problem and keeps its text.
    void recordError(const wchar_t* method, const std::wstring& text);

    const LauncherCliArgs& cliArgs_;
    const LauncherConfig& config_;
    std::wstring javaHome_;
    std::wstring jvmLibraryPath_;
    std::wstring workDir_;
    std::vector<std::wstring> jvmOptions_;
    std::vector<std::wstring> mainClassArguments_;
    std::int32_t pidToStop_ = -1;
    bool javaHomeFromEnvironment_ = false;
    std::wstring jvmOptsEnvironment_;
    std::wstring errors_;
    std::uint32_t errorCode_ = 0;
};
