#include "StopRequestClient.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <tuple>

#include "ChildProcesses.h"
#include "LinuxConsole.h"
#include "LinuxStopRequestClient.h"
#include "MessageIds.h"
#include "UnitTest.h"
#include "WaitUntil.h"

namespace {

using Result = StopRequestClient::Result;
using Timeout = SimpleOptional<std::uint64_t>;

/// "status output" of a stop.
std::wstring stop(StopRequestClient&& client, const Timeout& timeout,
                  const std::wstring& pidFile = L"")
{
    testing::internal::CaptureStderr();
    std::wstring none;
    LinuxConsole console(L"", L"", none);
    const int status = client.stop(pidFile, timeout, false, console);
    return std::to_wstring(status) + L" " + toWide(testing::internal::GetCapturedStderr());
}

/// A process 7 that is seen running for some looks yet.
class Target final : public StopRequestClient {
public:
    explicit Target(int looks, Result sent = Result::Stopped, Result killed = Result::Killed)
        : StopRequestClient(7), sent_(sent), killed_(killed), looks_(looks)
    {
    }
    bool isProcessRunning() const override { return looks_-- > 0; }
    Texts getCommandLine() const override { return commandLine; }
    Result sendStopSignal(bool) override { return sent_; }
    Result terminateProcess() override { return killed_; }
    std::wstring getWorkingDirectory() const override { return directory; }

    Texts commandLine;
    std::wstring directory;

private:
    const Result sent_, killed_;
    mutable int looks_;
};

using StopRequestClientTest = UnitTest;

TEST_F(StopRequestClientTest, KillsAfterTheTimeoutAndRemovesThePidFile)
{
    const std::wstring removed = L" and its PID-file was removed";
    const std::wstring failed = L" but its PID-file was not removed";
    const std::tuple<std::wstring, std::wstring, std::wstring> cases[] = {
        {L"--quiet --pidfile=@/joined", L"", removed},
        {L"--pidfile below-the-target", L"", removed},
        {L"--pidfile client/below-us", L"", removed},  // the target left the directory
        {L"--pidfile of-another", L"", L""},
        {L"--pidfile @/of-another", L"", L""},
        {L"--pidfile", L"", L""},
        {L"--pidfile @", L"", failed},
        {L"--pidfile /dev/null", L"", failed},
        {L"--pidfile /other", L"@/given", removed},
    };
    for (const char* name : {"joined", "given", "target/below-the-target", "client/below-us"}) {
        dir_.write(name, "7");
    }
    dir_.write("of-another", "8");
    std::filesystem::current_path(dir_.path());
    for (const auto& [commandLine, pidFile, suffix] : cases) {
        Target target(2);
        target.commandLine = split(at(commandLine));
        target.directory = dir_.wide("target");
        EXPECT_EQ(stop(std::move(target), Timeout(1), at(pidFile)),
                  L"0 Launcher with PID=7 was forced to stop" + suffix + L"\n");
    }
    std::filesystem::current_path("/");
    // Nothing else is left.
    for (const char* name : {"of-another", "target", "client", ""}) {
        EXPECT_TRUE(std::filesystem::remove(dir_ / name)) << name;
    }
}

TEST_F(StopRequestClientTest, LooksEvery100MillisecondsAndOnceBeforeItKills)
{
    const std::wstring stopped = L"0 Launcher with PID=7 stopped gracefully\n";
    EXPECT_EQ(stop(Target(3), Timeout(250)), stopped);
    EXPECT_EQ(stop(Target(4), Timeout(250)), L"0 Launcher with PID=7 was forced to stop\n");
    EXPECT_EQ(stop(Target(12), Timeout()), stopped);
    EXPECT_EQ(stop(Target(2, Result::StillRunning, Result::StillRunning), Timeout(1)),
              L"12 Launcher with PID=7 is still exist regardless of killing attempt\n");
    // Its PID file was removed after it was read.
    EXPECT_EQ(stop(Target(0), Timeout(), dir_.wide("missing")),
              L"11 Launcher with PID=7 not found, nothing was stopped\n");
}

TEST_F(StopRequestClientTest, FindsNobodyBehindAnIdThatIsNoOtherProcess)
{
    for (const std::int32_t pid : {0, -42, getpid()}) {
        EXPECT_EQ(
            stop(LinuxStopRequestClient(pid), Timeout(0)),
            L"11 Launcher with PID=" + std::to_wstring(pid) + L" not found, nothing was stopped\n");
        EXPECT_EQ(LinuxStopRequestClient(pid).isProcessRunning(), pid > 0);
    }
}

TEST_F(StopRequestClientTest, AStartIsRefusedWhereThePidFileCannotBeDeleted)
{
    EXPECT_EQ(
        raised([] { StopRequestClient::checkClientLauncherIsNotRunning(L"/dev/null/x"); }),
        L"3 PID file '/dev/null/x' exists and cannot be deleted. Error: (20) Not a directory");
}

/// A new process that runs `program`.
pid_t startStranger(const std::string& program, uid_t user = geteuid())
{
    const pid_t pid = fork();
    if (pid == 0) {
        if (setuid(user) == 0) execl(program.c_str(), program.c_str(), "1000", nullptr);
        _exit(127);
    }
    const std::string exe = "/proc/" + std::to_string(pid) + "/exe";
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::equivalent(exe, program); }));
    return pid;
}

TEST_F(StopRequestClientTest, APidFileOlderThanAStrangerIsStale)
{
    const std::string own = dir_ / std::filesystem::read_symlink("/proc/self/exe").filename();
    std::filesystem::copy_file("/bin/sleep", own);
    const pid_t sleep = startStranger("/bin/sleep"), namesake = startStranger(own);
    std::filesystem::remove(own);  // as an upgrade does
    const std::tuple<pid_t, std::chrono::seconds, bool> cases[] = {
        {sleep, std::chrono::seconds(5), false},  // clocks are not that exact
        {sleep, std::chrono::hours(1), true},
        {sleep, std::chrono::years(-600), false},  // beyond what nanoseconds can count
        {namesake, std::chrono::hours(1), false},
    };
    const std::wstring file = dir_.wide("pid");
    for (const auto& [pid, age, isStale] : cases) {
        const timespec changed{std::time(nullptr) - age.count(), 0};
        const timespec times[] = {changed, changed};
        ASSERT_EQ(utimensat(AT_FDCWD, dir_.write("pid", std::to_string(pid)).c_str(), times, 0), 0);
        if (isStale) {
            EXPECT_TRUE(stop(LinuxStopRequestClient(pid), Timeout(0), file).starts_with(L"11 "));
        }
        EXPECT_EQ(
            raised([&] { StopRequestClient::checkClientLauncherIsNotRunning(file); }),
            isStale ? L"nothing raised" : L"3 " + getMessage(IDS_PIDFILE_EXISTS_PROCESS_RUNNING));
        EXPECT_EQ(std::filesystem::exists(dir_ / "pid"), !isStale) << age.count();
    }
    ChildProcesses::killAll();
}

TEST_F(StopRequestClientTest, RootTrustsAPidFileNoFurtherThanItsOwner)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs the rights of root";
    constexpr uid_t kUser = 65534, kNoLink = 1;
    const std::tuple<uid_t, mode_t, uid_t, uid_t, bool> cases[] = {
        // File, its mode, a link to it, process
        {0, 0644, kNoLink, kUser, true},  {kUser, 0600, kNoLink, kUser, true},
        {kUser, 0644, kNoLink, 0, false}, {0, 0664, kNoLink, 0, false},
        {0, 0646, kNoLink, 0, false},     {0, 0644, 0, 0, true},
        {0, 0644, kUser, 0, false},       {kUser, 0644, kUser, kUser, true},
        {kUser, 0644, 2, kUser, false},
    };
    const std::string named = dir_ / "named";
    const auto stopNamed = [&](std::int32_t pid) {
        const std::wstring result = stop(LinuxStopRequestClient(pid), Timeout(0), toWide(named));
        return result.substr(0, result.find(L' '));
    };
    for (const auto& [owner, mode, linkOwner, user, isTrusted] : cases) {
        const pid_t process = startStranger("/bin/sleep", user);
        const bool isLink = linkOwner != kNoLink;
        std::filesystem::remove(named);
        const std::string file = dir_.write(isLink ? "pid" : "named", std::to_string(process));
        ASSERT_TRUE(chown(file.c_str(), owner, 0) == 0 && chmod(file.c_str(), mode) == 0);
        if (isLink) std::filesystem::create_symlink("pid", named);
        ASSERT_TRUE(!isLink || lchown(named.c_str(), linkOwner, 0) == 0);
        EXPECT_EQ(stopNamed(process), isTrusted ? L"0" : L"12")
            << owner << " " << std::oct << mode << " " << linkOwner << " " << user;
        EXPECT_EQ(std::filesystem::exists(named), !isTrusted);  // else what it was went, too
        ChildProcesses::killAll();
    }
    std::filesystem::remove(named);
    dir_.write("named", "1");  // which was read before, and is changed meanwhile
    EXPECT_EQ(stopNamed(startStranger("/bin/sleep")), L"12");
    const std::wstring warning = L"WARN StopRequestClient.stop: PID file does not count ";
    EXPECT_TRUE(log_.lines().back().starts_with(warning));
    ChildProcesses::killAll();
    EXPECT_EQ(stopNamed(999999999), L"11");
}

}  // namespace
