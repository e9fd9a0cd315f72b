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

/// Delivers `signal`; 0 or the errno of the failure.
int queueSignal(pid_t pid, int signal)
{
    const sigval value{};
    while (sigqueue(pid, signal, value) != 0) {
        if (errno != EINTR && errno != EAGAIN) return errno;
    }
    return 0;
}

}  // namespace

bool LinuxStopRequestClient::isProcessRunning() const
{
    try {
        return getOsUtilsFactory().getFileUtils().fileExists(procPath(L"status"));
    } catch (const LauncherException&) {
        // The look met the last moment of the process, or /proc hides what is
        // inside: the null signal tells.
        return pid() > 0 && (kill(pid(), 0) == 0 || errno == EPERM);
    }
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

    switch (queueSignal(pid(), fast ? SIGUSR2 : SIGUSR1)) {
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
    const bool killed = pid() > 0 && kill(pid(), SIGKILL) == 0;
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
