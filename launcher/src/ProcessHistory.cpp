#include "ProcessHistory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <sstream>
#include <string_view>

#include "FileHandle.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kTolerance{10'000};  ///< clocks of file systems may differ

/// Empty when it cannot be read.
std::string readLink(const std::string& path)
{
    std::array<char, PATH_MAX> target{};
    return readlink(path.c_str(), target.data(), target.size() - 1) < 0 ? "" : target.data();
}

/// The file name of the program that a process runs; empty when it cannot be
/// told. `process` is its directory in /proc.
std::string programName(const std::string& process)
{
    constexpr std::string_view kDeleted = " (deleted)";
    std::string path = readLink("/proc/" + process + "/exe");
    if (path.ends_with(kDeleted)) path.resize(path.size() - kDeleted.size());
    return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

bool runsAnotherProgram(pid_t pid)
{
    // A /proc of another namespace tells of other processes.
    if (readLink("/proc/self") != std::to_string(getpid())) return false;
    const std::string own = programName("self");
    const std::string other = programName(std::to_string(pid));
    return !own.empty() && !other.empty() && own != other;
}

milliseconds toMilliseconds(const timespec& time)
{
    // Not by way of nanoseconds, which end in the year 2262: a file may have a later date.
    return milliseconds(time.tv_sec * 1000 + time.tv_nsec / 1'000'000);
}

milliseconds now(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return toMilliseconds(time);
}

/// By the system's clock as it is set now.
std::optional<milliseconds> startTime(pid_t pid)
{
    const std::string ticks = readStartTicks(pid);
    if (ticks.empty()) return std::nullopt;
    const milliseconds sinceBoot(std::strtoll(ticks.c_str(), nullptr, 10) * 1000 /
                                 sysconf(_SC_CLK_TCK));
    return now(CLOCK_REALTIME) - now(CLOCK_BOOTTIME) + sinceBoot;
}

}  // namespace

std::string readStartTicks(pid_t pid)
{
    constexpr int kFieldsBehindName = 22 - 2;
    const FileHandle file = openFile("/proc/" + std::to_string(pid) + "/stat", "r");
    std::array<char, 1024> line{};
    if (!file || !fgets(line.data(), static_cast<int>(line.size()), file.get())) return {};
    std::string text = line.data();
    text.erase(0, text.rfind(')') + 1);  // the name may hold blanks and brackets
    std::istringstream fields(text);
    std::string field;
    for (int i = 0; i < kFieldsBehindName; ++i) fields >> field;
    return field;
}

bool belongsTo(uid_t user, pid_t pid)
{
    const FileHandle file = openFile("/proc/" + std::to_string(pid) + "/status", "r");
    std::array<char, 256> line{};
    while (file && fgets(line.data(), static_cast<int>(line.size()), file.get())) {
        std::istringstream fields(line.data());
        std::string name;
        uid_t real = 0, effective = 0, saved = 0;
        if (fields >> name && name == "Uid:" && fields >> real >> effective >> saved) {
            return user == real || user == saved;
        }
    }
    return false;
}

bool cannotHaveWritten(pid_t pid, const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    const std::optional<milliseconds> started = startTime(pid);
    return started && *started > toMilliseconds(status.st_mtim) + kTolerance &&
           runsAnotherProgram(pid);
}
