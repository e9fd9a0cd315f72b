#include "Daemon.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <future>
#include <map>
#include <utility>

#include "CodeBaseOptions.h"
#include "FileLock.h"
#include "IConsole.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "IService.h"
#include "LauncherException.h"
#include "LauncherJavaMethodInvocationException.h"
#include "LauncherParameters.h"
#include "LauncherVersion.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "StopRequestListener.h"
#include "StopSignalLog.h"
#include "TextConversion.h"

namespace {

constexpr wchar_t kClass[] = L"Daemon";

constexpr std::uint32_t kWaitHintMillis = 30'000;
constexpr std::uint32_t kSimpleStopBase = 100;
constexpr std::uint32_t kFastStopBase = 200;

// A start method that fails does so at once, as a rule: no settings, a port in use.
constexpr std::chrono::milliseconds kFirstMoments{500};

constexpr std::chrono::seconds kMethodPollStep{1};
constexpr std::uint64_t kStopPollMillis = 100;
constexpr int kStopPollsPerReport = 100;

constexpr wchar_t kStopFailed[] = L"Service stop method failed: ";

// Set once the JVM ends the process.
std::atomic<bool> jvmEndsProcess{false};

/// The JVM ends the process; runs on whichever thread it does that from.
void onJvmExit()
{
    jvmEndsProcess.store(true, std::memory_order_release);
    logInfo({kClass, L"run"}, L"JVM exited");
    postStopRequest(false);
    StopSignalLog::drain();  // the log is released next
}

/// The Java start method has returned or thrown; runs on its thread.
void onStartMethodEnd()
{
    logInfo({kClass, L"run"}, L"Java start method finished");
    postApplicationEnd();
}

/// Does not return when the JVM ends the process: the exit status is the JVM's,
/// and after a crash nothing of the application may run any more.
void leaveProcessToJvm()
{
    if (jvmEndsProcess.load(std::memory_order_acquire)) std::promise<void>().get_future().wait();
}

IProcessUtils& processUtils()
{
    return getOsUtilsFactory().getProcessUtils();
}

/// The path as it still reads after a change of the working directory.
std::wstring withWorkingDirectory(const std::wstring& path)
{
    if (path.empty() || path.front() == L'/') return path;
    return getOsUtilsFactory().getFileUtils().getAbsolutePath(L".") + L"/" + path;
}

std::wstring jvmClassName(std::wstring dottedName)
{
    std::replace(dottedName.begin(), dottedName.end(), L'.', L'/');
    return dottedName;
}

std::wstring executableName()
{
    const std::wstring path = processUtils().getExecutablePath();
    const std::wstring name = path.substr(path.rfind(L'/') + 1);
    return name.empty() ? path : name;
}

/// Waits for `method`; once a second `onSecond` learns how many have passed.
template <typename Future, typename OnSecond>
void waitForMethod(const Future& method, OnSecond onSecond)
{
    for (int seconds = 0; method.wait_for(kMethodPollStep) != std::future_status::ready;
         ++seconds) {
        onSecond(seconds);
    }
}

}  // namespace

Daemon::Daemon(std::shared_ptr<const LauncherParameters> parameters, IConsole& console)
    : javaVmManager_(std::make_unique<JavaVmManager>(jvmClassName(parameters->getMainClass()),
                                                     parameters->getMinimalJavaVersion())),
      pidFile_(std::make_unique<PidFile>()),
      parameters_(std::move(parameters)),
      console_(console)
{
}

Daemon::~Daemon()
{
    removePidFile();
    startMethod_ = {};
    pidFile_.reset();
    javaVmManager_.reset();
}

void Daemon::printStartupHeader(IService& service)
{
    if (service.isDaemon() || parameters_->isQuiet()) return;
    const std::wstring banner = parameters_->getUserStartupMessage();
    console_.writeLine(banner.empty()
                           ? formatMessage(IDS_STARTUP_HEADER, executableName(), kLauncherVersion,
                                           processUtils().getCurrentProcessId())
                           : banner);
}

int Daemon::run(IService& service)
{
    logInfo({kClass, L"run"}, L"Start running service routine...");
    JavaVmManager::setExitCallback(onJvmExit);
    // From the PID file on anybody may ask for a stop, and a service manager earlier.
    const std::shared_ptr<StopRequestListener> listener =
        createStopRequestListener(processUtils().getCurrentProcessId());
    interrupts_.hold();
    service.reportStatus(L"Starting Java");
    service.reportStartPending(kWaitHintMillis);
    savePidFile();
    service.releaseCaller();
    changeWorkingDirectoryIfNeeded();
    javaVmManager_->load(composeJvmOptions(*parameters_), parameters_->getJvmLibraryPath(), 0);
    interrupts_.deliver();
    startJava(service);

    Outcome outcome = serveStopEvents(service, *listener);

    logInfo({kClass, L"run"}, L"Wait for service.start() to finish.");
    if (!isStartMethodFinished()) service.reportStatus(L"Waiting for start to return");
    waitForServiceStartMethodToFinish();
    leaveProcessToJvm();
    service.reportStatus(L"Ending the JVM");
    logInfo({kClass, L"run"}, L"Service start method finished.");
    getLogger().flush();
    javaVmManager_->unload();
    service.reportStopped();
    collectStartMethod(outcome.exitBase);
    if (outcome.stopMethod.valid()) collectStopMethod(outcome.stopMethod, outcome.exitBase);
    return static_cast<int>(outcome.exitBase);
}

void Daemon::stop(IService& service)
{
    logInfo({kClass, L"stop"}, L"Stop signal received");
    postStopRequest(false);
    for (int checks = 1; !isStartMethodFinished(); ++checks) {
        if (checks % kStopPollsPerReport == 0) {
            service.reportStopPending(kWaitHintMillis);
            logInfo({kClass, L"stop"}, L"Stop signal is not processed still", L"count", checks);
        }
        processUtils().sleepMilliseconds(kStopPollMillis);
    }
    logInfo({kClass, L"stop"}, L"Stop signal processed");
    service.reportStopped();
}

void Daemon::exceptionHandler(const LauncherException& exception)
{
    logError({kClass, L"exceptionHandler"}, exception.message());
    getLogger().flush();
}

void Daemon::savePidFile()
{
    std::wstring path = parameters_->getPidFile();
    if (path.empty()) return;
    const bool isOurs = !pidFile_->mayExist(path);
    const FileLock lock(path, FileLock::Missing::Create);
    if (pidFile_->runningOwner(path)) {  // started at the same time, and was faster
        throw LauncherException(exit_code::kPidFile,
                                getMessage(IDS_PIDFILE_EXISTS_PROCESS_RUNNING));
    }
    try {
        pidFile_->save(path);
    } catch (const LauncherException&) {
        if (isOurs) pidFile_->remove(path);
        throw;
    }
    savedPidFile_ = std::move(path);  // whatever fails now, it will be removed
    if (!parameters_->getWorkDir().empty()) savedPidFile_ = withWorkingDirectory(savedPidFile_);
}

void Daemon::removePidFile() const noexcept
{
    try {
        const FileLock lock(savedPidFile_, FileLock::Missing::Leave);
        if (pidFile_->runningOwner(savedPidFile_)) {
            logInfo({kClass, L"removePidFile"}, L"PID file names another process by now", L"path",
                    savedPidFile_);
            return;
        }
        pidFile_->remove(savedPidFile_);
    } catch (const std::exception&) {
        // Out of memory, which the run has failed of, too: that is told.
    }
}

void Daemon::changeWorkingDirectoryIfNeeded() const
{
    const std::wstring& workDir = parameters_->getWorkDir();
    if (workDir.empty()) return;
    processUtils().changeCurrentDirectory(workDir);
    logInfo({kClass, L"changeWorkingDirectoryIfNeeded"}, L"Changed current working directory",
            L"path", workDir);
}

void Daemon::startJava(IService& service)
{
    const std::map<std::wstring, bool> booleanProperties{
        {L"quiet", service.isDaemon() || parameters_->isQuiet()},
        {L"daemon", service.isDaemon()},
    };
    const std::map<std::wstring, std::wstring> pathProperties{
        {L"instance.root", parameters_->getInstanceRoot()},
    };
    const std::wstring running = L"Running " + parameters_->getMainClass();
    // One that tells itself when it is ready may also tell its status from then on.
    if (!service.isAwaited()) service.reportStatus(running);
    startMethod_ = javaVmManager_->start(parameters_->getMainClassArguments(), pathProperties,
                                         booleanProperties, onStartMethodEnd);
    startMethodRuns_.store(true, std::memory_order_release);
    if (service.isAwaited()) {
        if (!outlivesFirstMoments()) return;
        service.reportStatus(running);
    }
    service.reportRunning();
}

bool Daemon::outlivesFirstMoments() const
{
    javaVmManager_->waitForStartCall();
    startMethod_.wait_for(kFirstMoments);
    javaVmManager_->waitForSafepoint();
    leaveProcessToJvm();
    if (!isStartMethodFinished()) return true;
    try {
        startMethod_.get();
        return true;
    } catch (const LauncherException&) {
        return false;  // told when the JVM has ended
    }
}

Daemon::Outcome Daemon::serveStopEvents(IService& service, ICancellableWait& listener)
{
    Outcome outcome;
    for (;;) {
        const int event = listener.waitForEvent();
        leaveProcessToJvm();
        if (event == kNoStopEvent) return outcome;
        const bool fast = event == kFastStop;
        logInfo({kClass, L"run"}, L"Got an event.", L"stopType",
                fast ? L"stop fast" : L"simple stop");
        if (!isStartMethodFinished()) javaVmManager_->waitForStartCall();
        if (isStartMethodFinished()) return outcome;
        if (service.isDaemon()) outcome.exitBase = fast ? kFastStopBase : kSimpleStopBase;
        if (javaVmManager_->hasStopMethod(parameters_->getMainClassArguments(), fast)) {
            logInfo({kClass, L"run"}, L"Service start method is not finished yet. Spawning stop.",
                    L"stopType", fast ? L"fast stop" : L"simple stop");
            getLogger().flush();
            service.reportStatus(fast ? L"Stopping (fast)" : L"Stopping (simple)");
            service.reportStopPending(kWaitHintMillis);
            outcome.stopMethod = callServiceStopMethodAndWaitForItsFinish(fast, outcome.exitBase);
            return outcome;
        }
        logInfo({kClass, L"run"}, L"Service stop method not fount.", L"stopFast", fast);
        getLogger().flush();  // nothing more may be written for long
    }
}

bool Daemon::isStartMethodFinished() const
{
    return startMethodRuns_.load(std::memory_order_acquire) &&
           startMethod_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

void Daemon::waitForServiceStartMethodToFinish() const
{
    waitForMethod(startMethod_, [](int seconds) {
        logInfo({kClass, L"waitForServiceStartMethodToFinish"},
                L"Service start method is still running", L"elapsedSec", seconds);
    });
    logInfo({kClass, L"waitForServiceStartMethodToFinish"}, L"Service start method finished");
}

std::future<void> Daemon::callServiceStopMethodAndWaitForItsFinish(bool fast,
                                                                   std::uint32_t exitBase)
{
    constexpr wchar_t kMethod[] = L"callServiceStopMethodAndWaitForItsFinish";
    const wchar_t* const stopType = fast ? L"stopFast" : L"simple stop";
    logInfo({kClass, kMethod}, L"Sending stop signal to Java process", L"stopType", stopType);
    std::future<void> stopMethod = spawnStopMethod(fast, exitBase);
    logInfo({kClass, kMethod}, L"Waiting java-stop to complete", L"timeout", L"forever",
            L"stopType", stopType);
    waitForMethod(stopMethod, [&](int seconds) {
        logInfo({kClass, kMethod}, L"Checking java-stop completion", L"elapsedSec", seconds);
    });
    logInfo({kClass, kMethod}, L"Java-stop finished");
    return stopMethod;
}

std::future<void> Daemon::spawnStopMethod(bool fast, std::uint32_t exitBase)
{
    try {
        return javaVmManager_->stop(parameters_->getMainClassArguments(), nullptr, fast);
    } catch (const LauncherException& e) {
        throw LauncherException(exitBase + e.exitCode(), kStopFailed + e.message());
    }
}

void Daemon::collectStartMethod(std::uint32_t exitBase) const
{
    try {
        startMethod_.get();
    } catch (const LauncherJavaMethodInvocationException& e) {
        throw LauncherException(exitBase + exit_code::kStartMethod, e.message());
    }
    logInfo({kClass, L"run"}, L"Service start method finished successfully.");
}

void Daemon::collectStopMethod(std::future<void>& stopMethod, std::uint32_t exitBase)
{
    try {
        stopMethod.get();
    } catch (const LauncherJavaMethodInvocationException& e) {
        throw LauncherException(exitBase + exit_code::kStopMethod, kStopFailed + e.message());
    } catch (const LauncherException& e) {
        throw LauncherException(exitBase + e.exitCode(), kStopFailed + e.message());
    } catch (const std::exception& e) {
        // The full stop before the colon is part of the text.
        throw LauncherException(exitBase + exit_code::kOperatingSystem,
                                L"Service stop method failed.: " + toWide(e.what()));
    }
    logInfo({kClass, L"run"}, L"Service stop method finished successfully.");
}
