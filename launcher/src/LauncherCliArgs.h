// LauncherCliArgs: the launcher's command line, parsed and checked. Made once
// by main; only openConsole() changes it afterwards, to report that the
// destinations of the streams cannot be used. A bad command line is no
// exception: the object is then in mode Error and holds the texts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "SimpleOptional.h"

class CliParseResult;
class CliParser;
class IConsole;

class LauncherCliArgs final {
public:
    enum class Mode : std::int32_t { Start = 0, Stop = 1, Error = 2, Version = 3, Usage = 4 };

    /// Parses the whole command line, element 0 being the program path. Prints
    /// the version or the usage when asked for it. Never throws for a bad
    /// command line.
    [[nodiscard]] static std::unique_ptr<LauncherCliArgs> create(
        const std::vector<std::wstring>& arguments);

    /// The console with the streams redirected as `cliArgs` says. Switches
    /// `cliArgs` to mode Error when `clogPath` is a destination of a stream or
    /// a redirection fails; the console then still works.
    [[nodiscard]] static std::unique_ptr<IConsole> openConsole(LauncherCliArgs& cliArgs,
                                                               const std::wstring& clogPath);

    /// Logs the command line as it came.
    static void logRawArgs(const std::vector<std::wstring>& arguments);
    void logState() const;

    [[nodiscard]] Mode getMode() const { return mode_; }
    /// Empty unless the mode is Error; several texts stand on a line each.
    [[nodiscard]] const std::wstring& getErrors() const { return errors_; }

    // Texts are empty and lists have no element when the option was not given.
    [[nodiscard]] bool isDaemon() const { return daemon_; }
    [[nodiscard]] bool isQuiet() const { return quiet_; }
    [[nodiscard]] bool isFast() const { return fast_; }
    [[nodiscard]] const std::wstring& getInstanceRoot() const { return instanceRoot_; }
    [[nodiscard]] const std::wstring& getWorkDir() const { return workDir_; }
    [[nodiscard]] const std::wstring& getPidFile() const { return pidFile_; }
    [[nodiscard]] const std::wstring& getCout() const { return cout_; }
    [[nodiscard]] const std::wstring& getCerr() const { return cerr_; }
    [[nodiscard]] const std::wstring& getCstd() const { return cstd_; }
    [[nodiscard]] const std::wstring& getClog() const { return clog_; }
    [[nodiscard]] const std::wstring& getServiceName() const { return serviceName_; }
    [[nodiscard]] const std::wstring& getProcName() const { return procName_; }
    [[nodiscard]] const std::wstring& getJavaHome() const { return javaHome_; }
    [[nodiscard]] const std::wstring& getJvmDll() const { return jvmDll_; }
    /// With "-Dinstance.root=" added when --instance was given.
    [[nodiscard]] const std::vector<std::wstring>& getJvmOptions() const { return jvmOptions_; }
    [[nodiscard]] const std::wstring& getClassPath() const { return classPath_; }
    [[nodiscard]] const std::wstring& getModulePath() const { return modulePath_; }
    [[nodiscard]] const std::wstring& getInterfaceClass() const { return interfaceClass_; }
    [[nodiscard]] const std::vector<std::wstring>& getInterfaceArguments() const
    {
        return interfaceArguments_;
    }
    /// Milliseconds to wait in stop mode.
    [[nodiscard]] const SimpleOptional<std::uint64_t>& getTimeout() const { return timeout_; }
    /// -1 when not given.
    [[nodiscard]] std::int32_t getPid() const { return pid_; }

    /// False when a destination of the standard streams cannot be used; both
    /// then stay where they are.
    [[nodiscard]] bool isRedirectionUsable() const { return redirectionUsable_; }
    /// False when the file of --clog cannot be used; getClog() is then empty.
    [[nodiscard]] bool isLogDestinationUsable() const { return logDestinationUsable_; }

private:
    /// Throws LauncherException (code 1) for a bad --pid or --timeout; other
    /// problems are recorded.
    LauncherCliArgs(Mode mode, const CliParseResult& result);
    /// Mode Error. A file of --clog in `result` takes the error if it can.
    LauncherCliArgs(const std::wstring& error, const CliParseResult& result);

    [[nodiscard]] static std::unique_ptr<LauncherCliArgs> build(const CliParser& parser,
                                                                const CliParseResult& result,
                                                                const std::wstring& programName);
    [[nodiscard]] static std::unique_ptr<LauncherCliArgs> showHelp(const CliParser& parser,
                                                                   const CliParseResult& result,
                                                                   const std::wstring& programName);

    void readOutputDestinations(const CliParseResult& result);
    [[nodiscard]] bool hasDestinationConflict(const CliParseResult& result);
    [[nodiscard]] std::wstring prepareDestination(const wchar_t* option, const std::wstring& path,
                                                  bool& usable);
    void readStartValues(const CliParseResult& result);
    void readStopValues(const CliParseResult& result);
    void readInstanceRoot(const CliParseResult& result);
    void recordError(const std::wstring& text);
    void logStartState() const;
    void logStopState() const;

    Mode mode_;
    bool daemon_ = false;
    bool quiet_ = false;
    std::wstring instanceRoot_;
    std::wstring workDir_;
    std::wstring pidFile_;
    std::wstring cout_;  ///< absolute, of --cstd when that is given
    std::wstring cerr_;  ///< likewise
    std::wstring cstd_;
    std::wstring clog_;  ///< absolute
    std::wstring serviceName_;
    std::wstring procName_;
    std::wstring javaHome_;
    std::wstring jvmDll_;
    std::vector<std::wstring> jvmOptions_;
    std::wstring classPath_;
    std::wstring modulePath_;
    std::wstring interfaceClass_;
    std::vector<std::wstring> interfaceArguments_;
    SimpleOptional<std::uint64_t> timeout_;
    bool fast_ = false;
    std::int32_t pid_ = -1;
    std::wstring errors_;
    bool redirectionUsable_ = true;
    bool logDestinationUsable_ = true;
};
