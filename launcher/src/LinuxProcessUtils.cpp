#include "LinuxProcessUtils.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <ctime>

#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "LastErrorText.h"
#include "LauncherOsException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "ProcCommandLine.h"
#include "TextConversion.h"

std::vector<std::wstring> LinuxProcessUtils::getCommandLine() const
{
    return readCommandLine(L"/proc/self/cmdline");
}

std::vector<std::wstring> LinuxProcessUtils::argumentsToList(int argc,
                                                             const char* const* argv) const
{
    std::vector<std::wstring> arguments;
    arguments.reserve(static_cast<std::size_t>(argc));
    for (int i = 0; i < argc; ++i) arguments.push_back(toWide(argv[i]));
    return arguments;
}

std::vector<std::wstring> LinuxProcessUtils::argumentsToList(int argc,
                                                             const wchar_t* const* argv) const
{
    return {argv, argv + argc};
}

std::int32_t LinuxProcessUtils::getCurrentProcessId() const
{
    return getpid();
}

std::wstring LinuxProcessUtils::getExecutablePath() const
{
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size() - 1);
    return length < 0 ? std::wstring() : toWide(path.data());
}

std::wstring LinuxProcessUtils::getExecutableDirectory() const
{
    const std::wstring path = getExecutablePath();
    // The directory of "/launcher" is the root, though nothing stands before its '/'.
    const std::size_t length = std::max<std::size_t>(path.rfind(L'/'), 1);
    return getOsUtilsFactory().getFileUtils().getAbsolutePath(path.substr(0, length));
}

void LinuxProcessUtils::changeCurrentDirectory(const std::wstring& path) const
{
    if (chdir(toUtf8(path).c_str()) == 0) return;
    const std::wstring error = lastErrorText();
    throw LauncherOsException(formatMessage(IDS_CANNOT_CWD, path, error));
}

void LinuxProcessUtils::sleepMilliseconds(std::uint64_t milliseconds) const
{
    constexpr std::uint64_t kNanosPerMilli = 1'000'000;
    const timespec duration{0, static_cast<long>(milliseconds * kNanosPerMilli)};
    nanosleep(&duration, nullptr);
}

std::wstring LinuxProcessUtils::getEnvironmentVariable(const std::wstring& name) const
{
    return toWide(std::getenv(toUtf8(name).c_str()));
}
