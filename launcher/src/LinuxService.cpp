#include "LinuxService.h"

#include <algorithm>

#include "IConsole.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "IServiceObject.h"
#include "ISystemUtils.h"
#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

namespace {

constexpr wchar_t kClass[] = L"LinuxService";

std::atomic<LinuxService*> currentService{nullptr};

void tellOnStandardError(const std::wstring& text)
{
    std::wstring none;
    getOsUtilsFactory().createConsole({}, {}, none)->writeErrorLine(text);
}

/// Detached, we are not the process that the service manager has started.
std::string mainProcess()
{
    const std::int32_t id = getOsUtilsFactory().getProcessUtils().getCurrentProcessId();
    return "MAINPID=" + std::to_string(id);
}

std::string extendedTimeout(std::uint32_t millis)
{
    return "EXTEND_TIMEOUT_USEC=" + std::to_string(std::uint64_t{millis} * 1000);
}

}  // namespace

LinuxService::LinuxService(IServiceObject& serviceObject, bool daemonize)
    : serviceObject_(serviceObject), isDaemon_(daemonize)
{
}

LinuxService::~LinuxService()
{
    LinuxService* self = this;
    currentService.compare_exchange_strong(self, nullptr, std::memory_order_acq_rel);
}

void LinuxService::registerAsCurrent()
{
    currentService.store(this, std::memory_order_release);
}

int LinuxService::init()
{
    logInfo({kClass, L"init"}, L"Starting an application");
    LinuxService* service = currentService.load(std::memory_order_acquire);
    if (!service) throw LauncherException(L"No service is registered.");
    return service->start();
}

void LinuxService::reportStartPending(std::uint32_t waitHintMs)
{
    serviceManager_.tell(mainProcess() + "\n" + extendedTimeout(waitHintMs));
}

void LinuxService::reportRunning()
{
    int created = kCreated;
    state_.compare_exchange_strong(created, kRunning, std::memory_order_acq_rel);
    if (isAwaited()) serviceManager_.tell("READY=1\n" + mainProcess());
}

void LinuxService::reportStopPending(std::uint32_t waitHintMs)
{
    serviceManager_.tell("STOPPING=1\n" + extendedTimeout(waitHintMs));
}

void LinuxService::reportStopped()
{
    if (state_.exchange(kStopped, std::memory_order_acq_rel) != kStopped) reportStatus(L"Stopped");
}

void LinuxService::reportStatus(const std::wstring& status)
{
    std::string line = toUtf8(status);
    // The name of a class may hold anything.
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' '; }, ' ');
    serviceManager_.tell("STATUS=" + line);
}

int LinuxService::start()
{
    if (state_.load(std::memory_order_acquire) != kCreated) {
        logError({kClass, L"start"}, L"Cannot start service twice.");
        return static_cast<int>(exit_code::kInternal);
    }
    logInfo({kClass, L"start"}, L"starting");
    if (isDaemon_ && !detach()) return static_cast<int>(exit_code::kOperatingSystem);
    state_.store(kRunning, std::memory_order_release);
    return runServiceObject();
}

void LinuxService::stop()
{
    switch (state_.load(std::memory_order_acquire)) {
        case kCreated:
            logError({kClass, L"stop"}, L"Trying to stop a service that was not initialized");
            return;
        case kRunning:
            logInfo({kClass, L"stop"}, L"Stop requested");
            state_.store(kStopping, std::memory_order_release);
            serviceObject_.stop(*this);
            logInfo({kClass, L"stop"}, L"Stop request finished");
            return;
        case kStopping:
        case kStopped:
            return;
        default:
            logError({kClass, L"stop"}, L"Unknown state");
    }
}

LinuxService::State LinuxService::state() const
{
    return static_cast<State>(state_.load(std::memory_order_acquire));
}

bool LinuxService::detach()
{
    if (detachment_.detach()) return true;
    const std::wstring error = getOsUtilsFactory().getSystemUtils().getLastErrorText();
    logError({kClass, L"start"}, L"Daemon failed", L"Error", error);
    tellOnStandardError(formatMessage(IDS_CANNOT_DETACH, error));
    serviceObject_.exceptionHandler(LauncherException(exit_code::kOperatingSystem, error));
    state_.store(kStopped, std::memory_order_release);
    return false;
}

int LinuxService::runServiceObject()
{
    try {
        serviceObject_.printStartupHeader(*this);
        const int result = serviceObject_.run(*this);
        reportStopped();
        logInfo({kClass, L"start"}, L"start finished");
        return result;
    } catch (const LauncherException& e) {
        if (isDaemon_) {
            serviceObject_.exceptionHandler(e);
            reportStopped();
            logError({kClass, L"start"}, getMessage(IDS_STOPPED_HEADER), L"exception", e.message());
        }
        reportStatus(L"Failed with exit code " +
                     toWString(static_cast<unsigned long>(e.exitCode())));
        throw;
    }
}
