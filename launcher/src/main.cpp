// The launcher's entry point: takes the command line through its mode, turns
// every failure into an exit status and one message, and writes the records
// that open and close a run.

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "Daemon.h"
#include "GraalAdapter.h"
#include "IConsole.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "ISystemUtils.h"
#include "Inventory.h"
#include "JavaFinder.h"
#include "JavaLibResolver.h"
#include "LauncherCliArgs.h"
#include "LauncherConfig.h"
#include "LauncherException.h"
#include "LauncherParameters.h"
#include "LauncherVersion.h"
#include "LinuxService.h"
#include "LinuxStopRequestClient.h"
#include "LocalizationSupport.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "OutputSignals.h"
#include "ProcessName.h"
#include "ReleaseFileJavaChecker.h"
#include "ServiceInstanceParameters.h"
#include "SimpleOptional.h"
#include "StackEnd.h"
#include "StandardDescriptors.h"
#include "StdoutErrorPrinter.h"
#include "StopSignalLog.h"
#include "TextConversion.h"

namespace {

using Arguments = std::vector<std::wstring>;
using Mode = LauncherCliArgs::Mode;

constexpr wchar_t kMain[] = L"main";

/// Releases the log; gives `exitCode`.
int finish(int exitCode)
{
    releaseLogger();
    return exitCode;
}

/// A failure that ends the run.
int fail(IConsole& console, const std::wstring& message, std::uint32_t exitCode)
{
    StopSignalLog::drain();
    logError({kMain, kMain}, message, L"exitCode", exitCode);
    console.writeErrorLine(message);
    return finish(static_cast<int>(exitCode));
}

int reportCommandLineErrors(const LauncherCliArgs& cliArgs, IConsole& console)
{
    console.writeLine(cliArgs.getErrors());
    try {
        initLogger(cliArgs.getClog());
        logError({kMain, kMain}, cliArgs.getErrors());
    } catch (const LauncherException& e) {
        console.writeErrorLine(e.message());  // the command line's errors stay the outcome
    }
    return finish(static_cast<int>(exit_code::kCommandLine));
}

void openLog(const std::wstring& path, const LauncherCliArgs& cliArgs, const Arguments& arguments,
             const std::wstring& launchTime)
{
    initLogger(path);
    logInfo({kMain, kMain}, L"Launcher started.", L"version", kLauncherVersion, L"time",
            launchTime);
    getLogger().flush();
    LauncherCliArgs::logRawArgs(arguments);
    cliArgs.logState();
}

/// The parameters keep references to `cliArgs` and `config`.
std::shared_ptr<const LauncherParameters> mergeSettings(
    const LauncherCliArgs& cliArgs, const IServiceInstanceParameters& serviceInstance,
    const LauncherConfig& config, const IJavaLibResolver& javaLibResolver, IConsole& console)
{
    IOsUtilsFactory& os = getOsUtilsFactory();
    GraalAdapter graalAdapter(os.getProcessUtils().getExecutableDirectory() + L"/libinventory.so",
                              os.getSystemUtils());
    Inventory inventory(graalAdapter, os);
    const ReleaseFileJavaChecker javaChecker(os.getFileUtils());
    StdoutErrorPrinter errorPrinter(console);
    InventoryAndEnvJavaFinder javaFinder(inventory, javaChecker, errorPrinter,
                                         os.getProcessUtils());
    return std::make_shared<const LauncherParameters>(cliArgs, serviceInstance, config,
                                                      javaLibResolver, javaFinder);
}

int stopAnother(const LauncherParameters& parameters, IConsole& console)
{
    const SimpleOptional<std::uint64_t>& timeout = parameters.getTimeout();
    logInfo({kMain, kMain}, getMessage(IDS_ANOTHER_ASKED_TO_STOP), L"pidToStop",
            parameters.getPidToStop(), L"timeoutMillis",
            timeout.isPresent() ? toWString(static_cast<long long>(timeout.value())) : L"IsNotSet");
    LinuxStopRequestClient client(parameters.getPidToStop());
    return client.stop(parameters.getPidFile(), timeout, parameters.isFast(), console);
}

int startService(const std::shared_ptr<const LauncherParameters>& parameters, IConsole& console)
{
    StopRequestClient::checkClientLauncherIsNotRunning(parameters->getPidFile());
    nameProcess(parameters->getProcName());
    Daemon daemon(parameters, console);
    LinuxService service(daemon, parameters->isDaemon());
    service.registerAsCurrent();
    return service.init();
}

/// The modes start and stop.
int runMode(const LauncherCliArgs& cliArgs, const Arguments& arguments,
            const std::wstring& launchTime, IConsole& console)
{
    const LauncherConfig config =
        LauncherConfig::read(cliArgs.getInstanceRoot(), cliArgs.getMode() == Mode::Start);
    if (config.hasError()) {
        console.writeLine(config.getErrorMessage());
        openLog(cliArgs.getClog(), cliArgs, arguments, launchTime);
        return finish(static_cast<int>(config.getErrorCode()));
    }
    const std::wstring& clog = cliArgs.getClog();
    openLog(clog.empty() ? config.getLogFile() : clog, cliArgs, arguments, launchTime);
    config.logState();
    const std::wstring& serviceName = cliArgs.getServiceName();
    const std::unique_ptr<ServiceInstanceParameters> serviceInstance =
        ServiceInstanceParameters::create(serviceName.empty() ? config.getServiceName()
                                                              : serviceName);
    serviceInstance->logState();

    const JavaLibResolver javaLibResolver;
    const std::shared_ptr<const LauncherParameters> parameters =
        mergeSettings(cliArgs, *serviceInstance, config, javaLibResolver, console);
    parameters->logState();
    if (parameters->hasErrors()) {
        console.writeLine(parameters->getErrors());
        return finish(static_cast<int>(parameters->getErrorCode()));
    }

    const int exitCode = parameters->isStopMode() ? stopAnother(*parameters, console)
                                                  : startService(parameters, console);
    StopSignalLog::drain();  // what is logged next is the last record
    logInfo({kMain, kMain}, getMessage(IDS_NORMAL_EXIT), L"exitCode", exitCode);
    return finish(exitCode);
}

int runLauncher(int argc, const char* const* argv)
{
    openClosedStandardDescriptors();
    ignoreOutputSignals();
    IOsUtilsFactory& factory = getOsUtilsFactory();
    const std::wstring launchTime = factory.getSystemUtils().getCurrentTimeText();
    // Never destroyed: a thread of the JVM may ask for a text while main returns.
    static_cast<void>(new LocalizationSupport(factory.getSystemUtils()));
    const Arguments arguments = factory.getProcessUtils().argumentsToList(argc, argv);
    const std::unique_ptr<LauncherCliArgs> cliArgs = LauncherCliArgs::create(arguments);
    if (cliArgs->getMode() == Mode::Version || cliArgs->getMode() == Mode::Usage) return 0;

    const std::unique_ptr<IConsole> console =
        LauncherCliArgs::openConsole(*cliArgs, cliArgs->getClog());
    if (cliArgs->getMode() == Mode::Error) return reportCommandLineErrors(*cliArgs, *console);
    try {
        return runMode(*cliArgs, arguments, launchTime, *console);
    } catch (const LauncherException& e) {
        return fail(*console, e.message(), e.exitCode());
    } catch (const std::exception& e) {
        return fail(*console, toWide(e.what()), exit_code::kInternal);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    struct Run {
        int argc;
        char** argv;
        int exitCode;
    } run{argc, argv, 0};
    callAtStackEnd(
        [](void* argument) {
            auto& self = *static_cast<Run*>(argument);
            self.exitCode = runLauncher(self.argc, self.argv);
        },
        &run);
    return run.exitCode;
}
