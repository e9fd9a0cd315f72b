#include "LauncherParameters.h"

#include <charconv>
#include <memory>
#include <string_view>

#include "FileContent.h"
#include "IFileUtils.h"
#include "IJavaLibResolver.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "ISystemUtils.h"
#include "LauncherCliArgs.h"
#include "LauncherOsException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"

namespace {

constexpr wchar_t kClass[] = L"LauncherParameters";
constexpr wchar_t kPidOption[] = L"--pid";
constexpr wchar_t kPidFileOption[] = L"--pidfile";
constexpr std::uint32_t kMaxPidFileSize = 10;

std::wstring_view trim(std::wstring_view text)
{
    constexpr wchar_t kBlanks[] = L" \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// The options in the value of JVM_OPTS: what stands between the markers
/// "--jvmopt", blanks inside included. The marker counts wherever it stands,
/// also within a word; required.
std::vector<std::wstring> splitJvmOpts(std::wstring_view text)
{
    constexpr std::wstring_view kMarker = L"--jvmopt";
    std::vector<std::wstring> options;
    while (true) {
        const std::size_t marker = text.find(kMarker);
        const std::wstring_view option = trim(text.substr(0, marker));
        if (!option.empty()) options.emplace_back(option);
        if (marker == std::wstring_view::npos) return options;
        text.remove_prefix(marker + kMarker.size());
    }
}

/// The directory as an absolute path, created if it is missing; empty for an
/// empty path.
std::wstring prepareWorkDir(const std::wstring& path)
{
    if (path.empty()) return {};
    const IFileUtils& files = getOsUtilsFactory().getFileUtils();
    files.createDirectories(path);
    return files.getAbsolutePath(path);
}

/// The PID file of the launcher to stop. Throws LauncherException with code 0
/// when it cannot be read.
std::shared_ptr<FileContent> readTargetPidFile(const std::wstring& path)
{
    IOsUtilsFactory& os = getOsUtilsFactory();
    try {
        if (os.getFileUtils().fileExists(path)) return os.getFileUtils().readFile(path);
    } catch (const LauncherOsException& e) {
        throw LauncherException(exit_code::kUnreadablePidFile, e.message());
    }
    const std::wstring error = os.getSystemUtils().getLastErrorText();
    throw LauncherException(exit_code::kUnreadablePidFile,
                            formatMessage(IDS_FILE_READ_ERROR, path, error));
}

/// The number that the bytes up to the first NUL write in digits, or -1.
std::int32_t parseDigits(std::string_view bytes)
{
    const std::string_view text = bytes.substr(0, bytes.find('\0'));
    if (text.find_first_not_of("0123456789") != std::string_view::npos) return -1;
    std::int32_t number = -1;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    return parsed.ec == std::errc() ? number : -1;
}

}  // namespace

LauncherParameters::LauncherParameters(const LauncherCliArgs& cliArgs,
                                       const IJavaLibResolver& javaLibResolver)
    : cliArgs_(cliArgs), javaLibResolver_(javaLibResolver)
{
    try {
        if (isStopMode()) collectForStop();
        if (isStartMode()) collectForStart();
    } catch (const LauncherException& e) {
        recordError(L"ctor", e.message());
        errorCode_ = e.exitCode();
    }
}

bool LauncherParameters::isStartMode() const
{
    return cliArgs_.getMode() == LauncherCliArgs::Mode::Start;
}

bool LauncherParameters::isStopMode() const
{
    return cliArgs_.getMode() == LauncherCliArgs::Mode::Stop;
}

std::wstring LauncherParameters::getClassPath() const
{
    return cliArgs_.getClassPath();
}

std::wstring LauncherParameters::getModulePath() const
{
    return cliArgs_.getModulePath();
}

std::wstring LauncherParameters::getMainClass() const
{
    return cliArgs_.getInterfaceClass();
}

std::wstring LauncherParameters::getInstanceRoot() const
{
    return cliArgs_.getInstanceRoot();
}

bool LauncherParameters::isQuiet() const
{
    return cliArgs_.isQuiet();
}

bool LauncherParameters::isDaemon() const
{
    return cliArgs_.isDaemon();
}

std::wstring LauncherParameters::getPidFile() const
{
    return cliArgs_.getPidFile();
}

const SimpleOptional<std::uint64_t>& LauncherParameters::getTimeout() const
{
    return cliArgs_.getTimeout();
}

bool LauncherParameters::isFast() const
{
    return cliArgs_.isFast();
}

bool LauncherParameters::hasErrors() const
{
    return !errors_.empty() || cliArgs_.getMode() == LauncherCliArgs::Mode::Error;
}

void LauncherParameters::logState() const
{
    if (hasErrors()) {
        logInfo({kClass, L"logState"}, L"Launch configuration failure.");
        return;
    }
    if (jvmOptsEnvironment_.empty()) {
        logInfo({kClass, L"logState"}, L"JVM_OPTS environment variable is not defined or empty");
    } else {
        logInfo({kClass, L"logState"}, L"Adding JVM_OPTS to JVM arguments", L"JVM_OPTS",
                jvmOptsEnvironment_);
    }
}

void LauncherParameters::collectForStop()
{
    if (!cliArgs_.getInstanceRoot().empty()) {
        recordError(L"ctor", getMessage(IDS_INSTANCE_IN_STOP_MODE));
    }
    pidToStop_ = detectPidToStop();
}

void LauncherParameters::collectForStart()
{
    if (getClassPath().empty() && getModulePath().empty()) {
        recordError(L"ctor", getMessage(IDS_CLASS_AND_MODULE_PATHS_ARE_EMPTY));
    }
    workDir_ = prepareWorkDir(cliArgs_.getWorkDir());
    locateJava();
    composeJvmOptions();
    mainClassArguments_ = cliArgs_.getInterfaceArguments();
}

void LauncherParameters::locateJava()
{
    if (!cliArgs_.getJvmDll().empty()) {
        jvmLibraryPath_ = cliArgs_.getJvmDll();
        return;
    }
    javaHome_ = detectJavaHome();
    if (!javaHome_.empty()) jvmLibraryPath_ = javaLibResolver_.resolve(javaHome_);
}

std::wstring LauncherParameters::detectJavaHome()
{
    constexpr wchar_t kMethod[] = L"detectJavaHome";
    const std::wstring& javaHome = cliArgs_.getJavaHome();
    if (javaHome.empty()) {
        recordError(kMethod, getMessage(IDS_CANNOT_GUESS_JAVAHOME));
    } else {
        logInfo({kClass, kMethod}, L"Using JAVA_HOME from --javahome command line argument.",
                L"path", javaHome);
    }
    return javaHome;
}

void LauncherParameters::composeJvmOptions()
{
    jvmOptions_ = cliArgs_.getJvmOptions();
    jvmOptsEnvironment_ = getOsUtilsFactory().getProcessUtils().getEnvironmentVariable(L"JVM_OPTS");
    for (std::wstring& option : splitJvmOpts(jvmOptsEnvironment_)) {
        jvmOptions_.push_back(std::move(option));
    }
}

std::int32_t LauncherParameters::detectPidToStop()
{
    constexpr wchar_t kMethod[] = L"detectPidToStop";
    const std::int32_t pid = cliArgs_.getPid();
    const std::wstring& pidFile = cliArgs_.getPidFile();
    if (pid == -1 && pidFile.empty()) {
        recordError(kMethod,
                    formatMessage(IDS_NONE_OF_2OPTIONS_ARE_SET, kPidOption, kPidFileOption));
        return -1;
    }
    if (pid >= 0 && !pidFile.empty()) {
        recordError(kMethod, formatMessage(IDS_OPTS_MUT_EX_MET, kPidOption, kPidFileOption));
        return -1;
    }
    if (pid > 0) return pid;

    const std::int32_t pidFromFile = readPidFromFile(pidFile);
    // Also after content that was refused; required.
    logInfo({kClass, kMethod}, L"PID retrieved from file", L"path", pidFile);
    return pidFromFile;
}

std::int32_t LauncherParameters::readPidFromFile(const std::wstring& path)
{
    constexpr wchar_t kMethod[] = L"readPidFromFile";
    const std::shared_ptr<FileContent> content = readTargetPidFile(path);
    if (content->size() == 0) {
        recordError(kMethod, formatMessage(IDS_PIDFILE_ZEROSIZE, path));
        return -1;
    }
    if (content->size() > kMaxPidFileSize) {
        recordError(kMethod, formatMessage(IDS_PIDFILE_EXTRACHARS, path));
        return -1;
    }
    const std::int32_t pid = parseDigits(content->view());
    if (pid == -1) recordError(kMethod, formatMessage(IDS_PIDFILE_BAD_CHARS, path));
    return pid;
}

void LauncherParameters::recordError(const wchar_t* method, const std::wstring& text)
{
    logError({kClass, method}, text);
    if (!errors_.empty()) errors_ += getOsUtilsFactory().getLineEnd();
    errors_ += text;
}
