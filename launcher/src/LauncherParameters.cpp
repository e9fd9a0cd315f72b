#include "LauncherParameters.h"

#include <charconv>
#include <chrono>
#include <memory>
#include <string_view>

#include "FileContent.h"
#include "FileLock.h"
#include "IFileUtils.h"
#include "IJavaFinder.h"
#include "IJavaLibResolver.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "IServiceInstanceParameters.h"
#include "ISystemUtils.h"
#include "LauncherCliArgs.h"
#include "LauncherConfig.h"
#include "LauncherOsException.h"
#include "LocalizationSupport.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextTrim.h"

namespace {

constexpr wchar_t kClass[] = L"LauncherParameters";
constexpr wchar_t kPidOption[] = L"--pid";
constexpr wchar_t kPidFileOption[] = L"--pidfile";
constexpr std::uint32_t kMaxPidFileSize = 10;

/// The options in the value of JVM_OPTS: what stands between the markers
/// "--jvmopt", blanks inside included. The marker counts wherever it stands,
/// also within a word; required.
std::vector<std::wstring> splitJvmOpts(std::wstring_view text)
{
    constexpr std::wstring_view kMarker = L"--jvmopt";
    std::vector<std::wstring> options;
    while (true) {
        const std::size_t marker = text.find(kMarker);
        const std::wstring_view option = trim(text.substr(0, marker), L" \t\r\n");
        if (!option.empty()) options.emplace_back(option);
        if (marker == std::wstring_view::npos) return options;
        text.remove_prefix(marker + kMarker.size());
    }
}

void append(const std::vector<std::wstring>& texts, std::vector<std::wstring>& list)
{
    list.insert(list.end(), texts.begin(), texts.end());
}

std::wstring firstNonEmpty(const std::wstring& first, const std::wstring& second)
{
    return first.empty() ? second : first;
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
/// when it is missing or cannot be read, and with code 20 when it is too big.
std::shared_ptr<FileContent> readTargetPidFile(const std::wstring& path)
{
    IOsUtilsFactory& os = getOsUtilsFactory();
    try {
        if (os.getFileUtils().fileExists(path)) return os.getFileUtils().readFile(path);
    } catch (const LauncherOsException& e) {
        if (e.message() == formatMessage(IDS_FILE_TOO_BIG, path)) throw;
        throw LauncherException(exit_code::kUnreadablePidFile, e.message());
    }
    const std::wstring error = os.getSystemUtils().getLastErrorText();
    throw LauncherException(exit_code::kUnreadablePidFile,
                            formatMessage(IDS_FILE_READ_ERROR, path, error));
}

/// The same; looks again at an empty one: a launcher may have created it just now, and
/// holds the file's lock until its number is written.
std::shared_ptr<FileContent> readWrittenPidFile(const std::wstring& path)
{
    constexpr int kLooks = 5;  // it may not have come to the lock yet
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    std::shared_ptr<FileContent> content = readTargetPidFile(path);
    for (int looks = 0; content->size() == 0 && looks < kLooks; ++looks) {
        if (std::chrono::steady_clock::now() > deadline) break;  // somebody sits on the lock
        {
            const FileLock lock(path, FileLock::Missing::Leave);
            content = readTargetPidFile(path);
        }
        if (content->size() == 0) getOsUtilsFactory().getProcessUtils().sleepMilliseconds(2);
    }
    return content;
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
                                       const IServiceInstanceParameters& serviceInstance,
                                       const LauncherConfig& config,
                                       const IJavaLibResolver& javaLibResolver,
                                       IJavaFinder& javaFinder)
    : cliArgs_(cliArgs), config_(config)
{
    try {
        if (isStopMode()) collectForStop();
        if (isStartMode()) collectForStart(serviceInstance, javaLibResolver, javaFinder);
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
    return firstNonEmpty(cliArgs_.getClassPath(), config_.getClassPath());
}

std::wstring LauncherParameters::getModulePath() const
{
    return firstNonEmpty(cliArgs_.getModulePath(), config_.getModulePath());
}

std::wstring LauncherParameters::getMainClass() const
{
    return firstNonEmpty(cliArgs_.getInterfaceClass(), config_.getMainClass());
}

std::wstring LauncherParameters::getInstanceRoot() const
{
    return cliArgs_.getInstanceRoot();
}

const std::wstring& LauncherParameters::getProcName() const
{
    return cliArgs_.getProcName();
}

bool LauncherParameters::isQuiet() const
{
    return cliArgs_.isQuiet() || config_.isQuiet();
}

bool LauncherParameters::isDaemon() const
{
    return cliArgs_.isDaemon();
}

std::wstring LauncherParameters::getPidFile() const
{
    return firstNonEmpty(cliArgs_.getPidFile(), config_.getPidFile());
}

std::int32_t LauncherParameters::getMinimalJavaVersion() const
{
    return config_.getMinimalJavaVersion();
}

std::wstring LauncherParameters::getUserStartupMessage() const
{
    const LauncherConfig::Texts& banner = config_.getBanner();
    const std::wstring language = getLanguageFromJvmOptions(jvmOptions_);
    if (!language.empty() && banner.contains(language)) {
        logInfo({kClass, L"getUserStartupMessage"}, L"Language is explicitly set using JvmOpts",
                L"language", language);
        return banner.at(language);
    }
    const ISystemUtils& system = getOsUtilsFactory().getSystemUtils();
    for (const std::wstring& key :
         {system.getLocaleName(), system.getLanguageName(), std::wstring(L"default")}) {
        if (banner.contains(key)) return banner.at(key);
    }
    return {};
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
    return !errors_.empty() || cliArgs_.getMode() == LauncherCliArgs::Mode::Error ||
           config_.hasError();
}

std::uint32_t LauncherParameters::getErrorCode() const
{
    return config_.getErrorCode() != 0 ? config_.getErrorCode() : errorCode_;
}

void LauncherParameters::logState() const
{
    if (hasErrors()) {
        logInfo({kClass, L"logState"}, L"Launch configuration failure.");
        return;
    }
    if (javaHomeFromEnvironment_) {
        logInfo({kClass, L"logState"}, getMessage(IDS_JAVA_HOME_FROM_SYSENV), L"JavaHome",
                javaHome_);
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

void LauncherParameters::collectForStart(const IServiceInstanceParameters& serviceInstance,
                                         const IJavaLibResolver& javaLibResolver,
                                         IJavaFinder& javaFinder)
{
    if (getClassPath().empty() && getModulePath().empty()) {
        recordError(L"ctor", getMessage(IDS_CLASS_AND_MODULE_PATHS_ARE_EMPTY));
    }
    workDir_ = prepareWorkDir(firstNonEmpty(cliArgs_.getWorkDir(), config_.getWorkDir()));
    jvmLibraryPath_ = cliArgs_.getJvmDll();
    if (jvmLibraryPath_.empty()) {
        javaHome_ = detectJavaHome(serviceInstance, javaFinder);
        if (!javaHome_.empty()) jvmLibraryPath_ = javaLibResolver.resolve(javaHome_);
    }
    composeJvmOptions(serviceInstance);
    mainClassArguments_ = cliArgs_.getInterfaceArguments();
    append(config_.getMainClassArguments(), mainClassArguments_);
}

std::wstring LauncherParameters::detectJavaHome(const IServiceInstanceParameters& serviceInstance,
                                                IJavaFinder& javaFinder)
{
    constexpr wchar_t kMethod[] = L"detectJavaHome";
    if (!cliArgs_.getJavaHome().empty()) {
        logInfo({kClass, kMethod}, L"Using JAVA_HOME from --javahome command line argument.",
                L"path", cliArgs_.getJavaHome());
        return cliArgs_.getJavaHome();
    }
    if (!serviceInstance.getJavaHome().empty()) {
        logInfo({kClass, kMethod}, L"Using JAVA_HOME from service ini file --javahome parameter.");
        return serviceInstance.getJavaHome();
    }
    if (!config_.getJavaHome().empty()) {
        logInfo({kClass, kMethod},
                L"Using JAVA_HOME from Launcher config file (launcher.yml) java-home parameter.");
        return config_.getJavaHome();
    }
    const JavaFinderResult found = javaFinder.find(getMinimalJavaVersion());
    if (!javaFinder.getErrors().empty()) recordError(kMethod, javaFinder.getErrors());
    if (found.path.empty()) recordError(kMethod, getMessage(IDS_CANNOT_GUESS_JAVAHOME));
    javaHomeFromEnvironment_ = found.fromEnvironment;
    return found.path;
}

void LauncherParameters::composeJvmOptions(const IServiceInstanceParameters& serviceInstance)
{
    jvmOptions_ = cliArgs_.getJvmOptions();
    append(serviceInstance.getJvmOptions(), jvmOptions_);
    append(config_.getJvmOptions(), jvmOptions_);
    jvmOptsEnvironment_ = getOsUtilsFactory().getProcessUtils().getEnvironmentVariable(L"JVM_OPTS");
    append(splitJvmOpts(jvmOptsEnvironment_), jvmOptions_);
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
    const std::shared_ptr<FileContent> content = readWrittenPidFile(path);
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
