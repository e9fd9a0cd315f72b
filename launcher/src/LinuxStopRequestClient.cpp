#include "LinuxStopRequestClient.h"

#include <signal.h>

#include <cerrno>

#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "LauncherException.h"
#include "Log.h"
#include "ProcCommandLine.h"

namespace {

constexpr wchar_t kClass[] = L"LinuxStopRequestClient";

}  // namespace

bool LinuxStopRequestClient::isProcessRunning() const
{
    return process_.isRunning();
}

std::vector<std::wstring> LinuxStopRequestClient::getCommandLine() const
{
    try {
        std::vector<std::wstring> arguments = readCommandLine(procPath(L"cmdline"));
        logInfo({kClass, L"getCommandLine"}, L"Obtained command line", L"parsedArgs", arguments,
                L"cmdArgsNo", arguments.size());
        return arguments;
    } catch (const LauncherException& e) {
        logError({kClass, L"getCommandLine"}, L"Failed to obtain command line", L"exception",
                 e.message());
        return {};
    }
}

StopRequestClient::Result LinuxStopRequestClient::sendStopSignal(bool fast)
{
    // Process groups and this very process (its id may be that of a launcher
    // of the container's former life) are no other launcher.
    const std::int32_t ownPid = getOsUtilsFactory().getProcessUtils().getCurrentProcessId();
    if (pid() <= 0 || pid() == ownPid) return Result::NotFound;

    switch (process_.queueSignal(fast ? SIGUSR2 : SIGUSR1)) {
        case 0:
            return Result::Stopped;
        case ESRCH:
            return Result::NotFound;
        case EPERM:
            return Result::NotPermitted;
        default:
            return isProcessRunning() ? Result::StillRunning : Result::NotFound;
    }
}

StopRequestClient::Result LinuxStopRequestClient::terminateProcess()
{
    const bool killed = process_.sendSignal(SIGKILL) == 0;
    logInfo({kClass, L"terminateProcess"}, L"Terminate process", L"result",
            killed ? L"success" : L"error");
    return killed ? Result::Killed : Result::StillRunning;
}

std::wstring LinuxStopRequestClient::getWorkingDirectory() const
{
    try {
        return getOsUtilsFactory().getFileUtils().getAbsolutePath(procPath(L"cwd"));
    } catch (const LauncherException&) {
        return {};
    }
}

std::wstring LinuxStopRequestClient::procPath(const wchar_t* name) const
{
    return L"/proc/" + std::to_wstring(pid()) + L"/" + name;
}
