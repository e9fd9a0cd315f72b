#include "LauncherCliArgs.h"

#include <charconv>
#include <system_error>
#include <utility>

#include "ErrorText.h"
#include "IConsole.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "LauncherCliDefinition.h"
#include "LauncherException.h"
#include "LauncherVersion.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

namespace {

constexpr wchar_t kClassName[] = L"LauncherCliArgs";
constexpr wchar_t kLogState[] = L"logState";
constexpr wchar_t kNothing[] = L"empty";

std::wstring valueOf(const CliParseResult& result, const wchar_t* option)
{
    return result.getOptionValue(option, {});
}

/// What the usage calls the program: element 0 without its directories.
std::wstring programNameOf(const std::vector<std::wstring>& arguments)
{
    if (arguments.empty()) return L"launcher";
    const std::wstring& path = arguments.front();
    return path.substr(path.find_last_of(L"/\\") + 1);  // npos + 1 is 0
}

/// True when the conversion took all of `digits`, which it was given.
bool tookAll(const std::from_chars_result& conversion, const std::string& digits)
{
    return conversion.ec == std::errc() && conversion.ptr == digits.data() + digits.size();
}

/// -1 for the empty text.
std::int32_t parsePid(const std::wstring& text)
{
    if (text.empty()) return -1;
    const std::string digits = toUtf8(text);
    std::int32_t pid = 0;
    if (!tookAll(std::from_chars(digits.data(), digits.data() + digits.size(), pid), digits)) {
        throw LauncherException(exit_code::kCommandLine,
                                formatMessage(IDS_PID_INVALID_SYNTAX, text));
    }
    if (pid <= 0) {
        throw LauncherException(exit_code::kCommandLine,
                                formatMessage(IDS_PID_INVALID_VALUE, text));
    }
    return pid;
}

/// Milliseconds; absent for the empty text. A sign is no digit here.
SimpleOptional<std::uint64_t> parseTimeout(const std::wstring& text)
{
    if (text.empty()) return {};
    const std::string digits = toUtf8(text);
    std::uint64_t millis = 0;
    if (!tookAll(std::from_chars(digits.data(), digits.data() + digits.size(), millis), digits)) {
        throw LauncherException(exit_code::kCommandLine, formatMessage(IDS_INVALID_TIMEOUT, text));
    }
    return SimpleOptional<std::uint64_t>(millis);
}

/// Makes sure that the file can be written to; gives its absolute path, and
/// the empty path for the empty one. Throws LauncherException.
std::wstring touchDestination(const std::wstring& path)
{
    if (path.empty()) return {};
    const IFileUtils& files = getOsUtilsFactory().getFileUtils();
    files.createParentDirectories(path);
    return files.touchFile(path);
}

/// The same; empty when the file cannot be written to.
std::wstring touchDestinationIfPossible(const std::wstring& path)
{
    try {
        return touchDestination(path);
    } catch (const LauncherException&) {
        return {};
    }
}

}  // namespace

std::unique_ptr<LauncherCliArgs> LauncherCliArgs::create(const std::vector<std::wstring>& arguments)
{
    CliParseResult result(L"");
    try {
        const CliParser parser = createLauncherCliDefinition();
        result = parser.parse(arguments);
        return build(parser, result, programNameOf(arguments));
    } catch (const LauncherException& exception) {
        return std::unique_ptr<LauncherCliArgs>(new LauncherCliArgs(exception.message(), result));
    }
}

std::unique_ptr<LauncherCliArgs> LauncherCliArgs::build(const CliParser& parser,
                                                        const CliParseResult& result,
                                                        const std::wstring& programName)
{
    if (result.hasErrors()) {
        return std::unique_ptr<LauncherCliArgs>(new LauncherCliArgs(result.getErrors(), result));
    }
    const std::wstring& mode = result.getModeName();
    if (mode == cli_mode::kHelp) return showHelp(parser, result, programName);
    if (mode == cli_mode::kStart) {
        return std::unique_ptr<LauncherCliArgs>(new LauncherCliArgs(Mode::Start, result));
    }
    if (mode == cli_mode::kStop) {
        return std::unique_ptr<LauncherCliArgs>(new LauncherCliArgs(Mode::Stop, result));
    }
    throw LauncherException(exit_code::kCommandLine, getMessage(IDS_UNKNOWN_MODE));
}

std::unique_ptr<LauncherCliArgs> LauncherCliArgs::showHelp(const CliParser& parser,
                                                           const CliParseResult& result,
                                                           const std::wstring& programName)
{
    const Mode mode = result.hasSwitch(cli_switch::kVersion) ? Mode::Version : Mode::Usage;
    std::unique_ptr<LauncherCliArgs> args(new LauncherCliArgs(mode, result));
    const std::unique_ptr<IConsole> console = openConsole(*args, args->getClog());
    if (mode == Mode::Version) {
        console->write(L"Version ");
        console->writeLine(kLauncherVersion);
    } else {
        const CliMode& shown = parser.getMode(result.getModeName());
        console->writeLine(parser.renderUsage(shown, result, programName));
    }
    return args;
}

std::unique_ptr<IConsole> LauncherCliArgs::openConsole(LauncherCliArgs& cliArgs,
                                                       const std::wstring& clogPath)
{
    std::wstring error;
    bool redirect = cliArgs.redirectionUsable_;
    if (redirect && !clogPath.empty() && (clogPath == cliArgs.cout_ || clogPath == cliArgs.cerr_)) {
        cliArgs.recordError(formatMessage(IDS_LOG_REUSE_OF_OTHER_STREAMS_PROHIBITED, clogPath));
        redirect = false;
    }
    std::unique_ptr<IConsole> console =
        redirect ? getOsUtilsFactory().createConsole(cliArgs.cout_, cliArgs.cerr_, error)
                 : getOsUtilsFactory().createConsole({}, {}, error);
    if (!error.empty()) cliArgs.recordError(error);
    return console;
}

void LauncherCliArgs::logRawArgs(const std::vector<std::wstring>& arguments)
{
    logInfo({kClassName, L"logRawArgs"}, L"CLI args parsed", L"args", arguments);
}

void LauncherCliArgs::logState() const
{
    switch (mode_) {
        case Mode::Start:
            return logStartState();
        case Mode::Stop:
            return logStopState();
        case Mode::Error:
            return logInfo({kClassName, kLogState}, L"Mode is Error.", L"Errors", errors_);
        case Mode::Version:
            return logInfo({kClassName, kLogState}, L"Mode is Version.");
        case Mode::Usage:
            return logInfo({kClassName, kLogState}, L"Mode is Usage.");
    }
    throw LauncherException(L"Illegal state. mode = " + toWString(static_cast<long>(mode_)));
}

LauncherCliArgs::LauncherCliArgs(Mode mode, const CliParseResult& result) : mode_(mode)
{
    readOutputDestinations(result);
    switch (mode) {
        case Mode::Start:
            readStartValues(result);
            return;
        case Mode::Stop:
            readStopValues(result);
            return;
        case Mode::Error:
        case Mode::Version:
        case Mode::Usage:
            return;
    }
    throw LauncherException(
        L"Internal error: illegal mode argument in LauncherCliArgs::LauncherCliArgs");
}

LauncherCliArgs::LauncherCliArgs(const std::wstring& error, const CliParseResult& result)
    : mode_(Mode::Error),
      clog_(touchDestinationIfPossible(valueOf(result, cli_option::kClog))),
      errors_(error)
{
}

void LauncherCliArgs::readOutputDestinations(const CliParseResult& result)
{
    cstd_ = valueOf(result, cli_option::kCstd);
    const std::wstring clog = valueOf(result, cli_option::kClog);
    if (hasDestinationConflict(result)) {
        clog_ = touchDestinationIfPossible(clog);  // the log shall tell of the conflict
        return;
    }
    const std::wstring cout = cstd_.empty() ? valueOf(result, cli_option::kCout) : cstd_;
    const std::wstring cerr = cstd_.empty() ? valueOf(result, cli_option::kCerr) : cstd_;
    cout_ = prepareDestination(cli_option::kCout, cout, redirectionUsable_);
    cerr_ = prepareDestination(cli_option::kCerr, cerr, redirectionUsable_);
    clog_ = prepareDestination(cli_option::kClog, clog, logDestinationUsable_);
}

/// Records an option that --cstd leaves no room for, and turns redirection off.
bool LauncherCliArgs::hasDestinationConflict(const CliParseResult& result)
{
    if (cstd_.empty()) return false;
    for (const wchar_t* option : {cli_option::kCout, cli_option::kCerr}) {
        if (valueOf(result, option).empty()) continue;
        redirectionUsable_ = false;
        recordError(formatMessage(IDS_OPTIONS_CONFLICT, option, cli_option::kCstd));
        return true;
    }
    return false;
}

/// The absolute path of a file that can be written to. Otherwise empty: the
/// failure is recorded under the name of `option`, and `usable` cleared.
std::wstring LauncherCliArgs::prepareDestination(const wchar_t* option, const std::wstring& path,
                                                 bool& usable)
{
    try {
        return touchDestination(path);
    } catch (const LauncherException& exception) {
        usable = false;
        recordError(
            formatMessage(IDS_DESTINATION_IS_NOT_ACCESSIBLE_EX, option, path, exception.message()));
        return {};
    }
}

void LauncherCliArgs::readStartValues(const CliParseResult& result)
{
    readInstanceRoot(result);
    pidFile_ = valueOf(result, cli_option::kPidFile);
    // Behind the option of the instance root: a definition of the user's wins.
    for (std::wstring& option : result.getOptionValues(cli_option::kJvmOpt)) {
        jvmOptions_.push_back(std::move(option));
    }
    interfaceArguments_ = result.getOptionValues(cli_option::kInterfaceArgument);
    workDir_ = valueOf(result, cli_option::kWorkDir);
    daemon_ = result.hasSwitch(cli_switch::kDaemon);
    quiet_ = result.hasSwitch(cli_switch::kQuiet);
    serviceName_ = valueOf(result, cli_option::kServiceName);
    procName_ = valueOf(result, cli_option::kProcName);
    javaHome_ = valueOf(result, cli_option::kJavaHome);
    jvmDll_ = valueOf(result, cli_option::kJvmDll);
    classPath_ = valueOf(result, cli_option::kClassPath);
    modulePath_ = valueOf(result, cli_option::kModulePath);
    interfaceClass_ = valueOf(result, cli_option::kInterfaceClass);
}

void LauncherCliArgs::readStopValues(const CliParseResult& result)
{
    instanceRoot_ = valueOf(result, cli_option::kInstance);
    pidFile_ = valueOf(result, cli_option::kPidFile);
    pid_ = parsePid(valueOf(result, cli_option::kPid));
    timeout_ = parseTimeout(valueOf(result, cli_option::kTimeout));
    fast_ = result.hasSwitch(cli_switch::kFast);
}

void LauncherCliArgs::readInstanceRoot(const CliParseResult& result)
{
    instanceRoot_ = valueOf(result, cli_option::kInstance);
    if (instanceRoot_.empty()) return;
    try {
        const IFileUtils& files = getOsUtilsFactory().getFileUtils();
        if (!files.fileExists(instanceRoot_)) {
            recordError(formatMessage(IDS_INSTANCE_ROOT_NOT_EXIST, instanceRoot_));
        } else if (!files.isDirectory(instanceRoot_)) {
            recordError(formatMessage(IDS_INSTANCE_ROOT_IS_A_FILE, instanceRoot_));
        } else {
            jvmOptions_.push_back(L"-Dinstance.root=" + instanceRoot_);
        }
    } catch (const LauncherException& exception) {
        recordError(
            formatMessage(IDS_CANNOT_SET_INSTANCE_ROOT, instanceRoot_, exception.message()));
    }
}

void LauncherCliArgs::recordError(const std::wstring& text)
{
    appendErrorText(text, errors_);
    mode_ = Mode::Error;
}

void LauncherCliArgs::logStartState() const
{
    namespace option = cli_option;
    logInfo({kClassName, kLogState}, L"Mode is Start. Environment:", cli_switch::kQuiet, quiet_,
            option::kCerr, cerr_, option::kCout, cout_, cli_switch::kDaemon, daemon_,
            option::kServiceName, serviceName_, option::kClog, clog_, option::kPidFile, pidFile_,
            option::kWorkDir, workDir_, option::kProcName, procName_, option::kInstance,
            instanceRoot_);
    logInfo({kClassName, kLogState}, L"Mode is Start. JVM:", option::kJavaHome, javaHome_,
            option::kJvmDll, jvmDll_, option::kClassPath, classPath_, option::kModulePath,
            modulePath_, option::kInterfaceClass, interfaceClass_);
    const std::vector<std::wstring> none{kNothing};
    logInfo({kClassName, kLogState}, L"Mode is Start. JVM options:", L"options",
            jvmOptions_.empty() ? none : jvmOptions_);
    logInfo({kClassName, kLogState}, L"Mode is Start. main class args:", L"args",
            interfaceArguments_);
}

void LauncherCliArgs::logStopState() const
{
    namespace option = cli_option;
    const std::wstring timeout = timeout_.isPresent() ? toWString(timeout_.value()) : kNothing;
    logInfo({kClassName, kLogState}, L"Mode is Stop. Environment:", option::kPidFile, pidFile_,
            option::kPid, pid_, option::kTimeout, timeout, cli_switch::kFast, fast_, option::kCout,
            cout_, option::kCerr, cerr_);
}
