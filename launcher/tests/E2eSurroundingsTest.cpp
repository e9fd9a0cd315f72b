// The launcher where the system gives it less than usual: no rights, no room, no
// /proc, odd names, and what a parent has left behind.
#include <fcntl.h>
#include <grp.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <thread>

#include "EndToEndTest.h"
#include "FileDescriptor.h"

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/// In the process that becomes a launcher, as all that uses it: what cannot be
/// done ends the process.
void require(bool done)
{
    if (!done) _exit(125);
}

void becomeUser(uid_t id = 65534)
{
    require(setgroups(0, nullptr) == 0 && setgid(id) == 0 && setuid(id) == 0);
}

/// Mounts that nobody else sees, and their end with the last process.
void leaveNamespaces(int others = 0)
{
    require(unshare(CLONE_NEWNS | others) == 0 &&
            mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0);
}

void mountHere(const std::string& type, const std::string& place, const std::string& options = "")
{
    leaveNamespaces();
    require(mount("", place.c_str(), type.c_str(), 0, options.c_str()) == 0);
}

/// Goes on in a new process, and ends as that does.
void goOnInChild()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const pid_t child = fork();
    if (child == 0) return;
    int status = 0;
    waitpid(child, &status, 0);
    _exit(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
}

std::function<void()> limit(__rlimit_resource resource, rlim_t value)
{
    return [=] {
        require(close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) == 0);  // what the test has inherited
        const rlimit both{value, value};
        require(setrlimit(resource, &both) == 0);
    };
}

void fill(const std::string& file)
{
    std::ofstream(file) << std::string(1 << 20, 'x') << std::flush;
}

/// Whether this process may do to its children what the tests do.
bool hasRights()
{
    const pid_t pid = fork();
    if (pid == 0) {
        leaveNamespaces(CLONE_NEWPID);
        becomeUser();
        _exit(0);
    }
    return ChildProcesses::waitForExit(pid) == 0;
}

class SurroundingsE2eTest : public JdkTest {
protected:
    /// A PID file stays only where the JVM has ended the process.
    void expectWorksOrTells(const LauncherRun& run, const std::string& what) const
    {
        std::filesystem::remove(dir / "start.report");
        const LauncherResult result = run.run();
        const bool works = result.status == 0 && exists("start.report");
        EXPECT_TRUE(works || (result.status > 0 && !(result.out + result.err).empty())) << what;
        EXPECT_TRUE(!exists("service.pid") || log().holds("INFO JVM exited")) << what;
        std::filesystem::remove(dir / "service.pid");
    }
    /// A start that names no file but those of Java.
    [[nodiscard]] LauncherRun plainService(const std::string& script) const
    {
        return plainService(script, serviceJar);
    }
    [[nodiscard]] LauncherRun plainService(const std::string& script,
                                           const std::string& classPath) const
    {
        LauncherRun run = launcher("start --quiet --jifaceclass service.Service").withJvm();
        run.arg("--jvmdll=" + library).arg("--jclasspath=" + classPath);
        return run.args("--jvmopt=-Dstop=release --jvmopt=-Dstart=" + script);
    }
    /// Asks the service of the PID file to stop; what that prints.
    [[nodiscard]] std::string stop(const std::function<void()>& before) const
    {
        LauncherRun run = launcher("stop --pidfile").arg(dir / "service.pid");
        return run.before(before).run().err;
    }
};
FOR_EACH_JDK(SurroundingsE2eTest);

class RightsE2eTest : public SurroundingsE2eTest {
protected:
    void SetUp() override
    {
        static const bool allowed = hasRights();
        if (!allowed) GTEST_SKIP() << "needs the rights to mount and to become another user";
        openToAllUsers();
    }
};
FOR_EACH_JDK(RightsE2eTest);

TEST_P(RightsE2eTest, WithoutProcNothingIsStartedOrTakenForStopped)
{
    if (kSanitized) GTEST_SKIP() << "the sanitizer itself needs /proc";
    const auto hideProc = [] { mountHere("tmpfs", "/proc"); };
    const std::string message = "Unable to convert path to absolute ''. Error: (2) ";
    const LauncherResult start = service().before(hideProc).run();
    EXPECT_EQ(start.status, 20);
    EXPECT_TRUE(start.err.starts_with(message)) << start.err;
    EXPECT_FALSE(exists("service.pid"));
    const LauncherProcess target = startReady(service("start=ready,wait stop=release"));
    EXPECT_TRUE(stop(hideProc).starts_with(message));
    expectEndAfter(SIGUSR1, target, 0);
}

TEST_P(RightsE2eTest, ClosedStreamsTakeNoFileOfTheLauncher)
{
    for (const bool hasDevices : {true, false}) {
        LauncherRun run = service("start=ready,wait stop=release");
        run.before([=] {
            if (!hasDevices) mountHere("tmpfs", "/dev");
            close_range(STDIN_FILENO, STDERR_FILENO, 0);
        });
        const LauncherProcess launcher = startReady(run);
        for (const char* stream : {"0", "1", "2"}) {
            const std::string link = "/proc/" + std::to_string(launcher.pid) + "/fd/" + stream;
            EXPECT_EQ(std::filesystem::read_symlink(link), hasDevices ? "/dev/null" : "/");
        }
        expectEndAfter(SIGUSR1, launcher, 0);
    }
}

TEST_P(RightsE2eTest, WhatProcHidesStillRuns)
{
    const auto hideOthers = [] {
        mountHere("proc", "/proc", "hidepid=2");
        becomeUser();
    };
    const LauncherProcess target = startReady(service("start=ready,wait stop=release"));
    const std::string pid = std::to_string(target.pid);
    const LauncherResult start =
        launcher("start --jvmdll x --jclasspath x --pidfile service.pid").before(hideOthers).run();
    EXPECT_EQ(start.status, 3);
    EXPECT_EQ(start.err, "PID file exists and the process with PID referenced there is running\n");
    EXPECT_EQ(content("service.pid"), pid);
    const std::string refused = "Launcher is not permitted to stop process with PID=" + pid + "\n";
    EXPECT_EQ(stop(hideOthers), refused);
    EXPECT_EQ(stop([] { becomeUser(); }), refused);
    expectEndAfter(SIGUSR1, target, 0);
}

TEST_P(RightsE2eTest, ADiskWithoutRoomStopsOnlyTheStart)
{
    std::filesystem::create_directory(dir / "m");
    const std::string inaccessible = " is not accessible. Error: Cannot read file 'm/";
    const std::tuple<std::string, bool, int, std::string> cases[] = {
        {"pidfile", true, 3, "Cannot write file 'm/f'. Error: (30) Read-only file system\n"},
        {"pidfile", false, 3, "Cannot write file 'm/f'. Error: (28) No space left on device\n"},
        {"clog", true, 1, "'--clog' destination 'm/f'" + inaccessible},
        {"cout", true, 1, "'--cout' destination 'm/f'" + inaccessible},
        {"clog", false, 0, ""},
        {"cout", false, 0, ""},
    };
    for (const auto& [option, readOnly, status, message] : cases) {
        LauncherRun run = plainService("").arg("--" + option).arg("m/f");
        run.before([this, off = readOnly] {
            mountHere("tmpfs", dir / "m", "size=64k");
            fill(dir / "m/full");
            const unsigned long flags = off ? MS_REMOUNT + MS_RDONLY : MS_REMOUNT + 0;
            require(mount("", (dir / "m").c_str(), "", flags, nullptr) == 0);
        });
        const LauncherResult result = run.run();
        EXPECT_EQ(result.status, status) << option;
        EXPECT_TRUE((result.out + result.err).starts_with(message)) << result.out << result.err;
    }
}

TEST_P(RightsE2eTest, ADiskThatFillsUpDoesNotStopTheService)
{
    const std::string small = dir / "m";
    std::filesystem::create_directory(small);
    LauncherRun run = service("start=ready,until:go", "service.Service$NoStop");
    run.args("--cout out --cerr out --workdir").arg(dir.path()).before([&small] {
        mountHere("tmpfs", small, "size=64k");
        require(chdir(small.c_str()) == 0);
    });
    const LauncherProcess launcher = startReady(run);
    const std::string root = "/proc/" + std::to_string(launcher.pid) + "/root";
    const FileDescriptor disk(open((root + small).c_str(), O_PATH | O_CLOEXEC));
    EXPECT_EQ(faccessat(disk.get(), "service.pid", F_OK, 0), 0);
    fill(root + small + "/full");
    for (int i = 0; i < 1000; ++i) kill(launcher.pid, SIGUSR1);  // for the log
    dir.write("go", "");
    EXPECT_EQ(launcher.waitForExit().status, 0);
    EXPECT_NE(faccessat(disk.get(), "service.pid", F_OK, 0), 0);
}

TEST_P(SurroundingsE2eTest, AStartUnderATightLimitWorksOrTells)
{
    if (kSanitized) GTEST_SKIP() << "the sanitizers take more than the limits";
    const std::tuple<__rlimit_resource, std::vector<rlim_t>> cases[] = {
        {RLIMIT_NOFILE, {4, 5, 6, 7, 8, 9, 16}},
        // Not 128 KiB, where JDK 25 crashes now and then in any program.
        {RLIMIT_STACK, {64 << 10, 96 << 10, 192 << 10, 256 << 10}},
        {RLIMIT_FSIZE, {4096}},
        {RLIMIT_AS, {12 << 20, 400 << 20, 1UL << 30, 4UL << 30}},
    };
    for (const auto& [resource, values] : cases) {
        for (const rlim_t value : values) {
            expectWorksOrTells(service("start=report").before(limit(resource, value)),
                               std::to_string(resource) + ": " + std::to_string(value));
        }
    }
    // No room for any message.
    EXPECT_EQ(service().before(limit(RLIMIT_FSIZE, 0)).run().status, 3);
    EXPECT_FALSE(exists("service.pid"));

    const LauncherProcess target = startReady(service("start=ready,wait stop=release"));
    EXPECT_EQ(stop(limit(RLIMIT_NOFILE, 6)),
              "Launcher with PID=" + std::to_string(target.pid) + " stopped gracefully\n");
    EXPECT_EQ(target.waitForExit().status, 0);
}

TEST_P(RightsE2eTest, AStartWithFewThreadsWorksOrTells)
{
    const auto user = static_cast<uid_t>(100'000 + getpid());  // that nobody else is
    for (rlim_t threads = 1; threads < 28; threads += threads < 14 ? 4 : 1) {
        const auto restrict = [=] {
            limit(RLIMIT_NPROC, threads)();
            becomeUser(user);
        };
        expectWorksOrTells(service("start=report").before(restrict),
                           std::to_string(threads) + " threads");
    }
}

TEST_P(SurroundingsE2eTest, NeedsNoEnvironmentAndNoDirectory)
{
    const auto loseAll = [] {
        const char* const options = kSanitized ? getenv("ASAN_OPTIONS") : nullptr;
        const std::string kept = options ? options : "";
        clearenv();
        setenv("ASAN_OPTIONS", kept.c_str(), 1);
        if (!options) unsetenv("ASAN_OPTIONS");
        const std::string gone = "gone" + std::to_string(getpid());
        require(mkdir(gone.c_str(), 0700) == 0 && chdir(gone.c_str()) == 0);
        require(rmdir(("../" + gone).c_str()) == 0);
    };
    const auto start = [&](const std::string& pidFile) {
        LauncherRun run = plainService("ready,wait").arg("--pidfile=" + pidFile);
        return run.arg("--workdir=" + dir.path().string()).before(loseAll);
    };
    const LauncherProcess target = startReady(start(dir / "service.pid"));
    EXPECT_EQ(stop(loseAll),
              "Launcher with PID=" + std::to_string(target.pid) + " stopped gracefully\n");
    EXPECT_EQ(target.waitForExit().status, 0);
    EXPECT_FALSE(exists("service.pid"));
    const LauncherResult relative = start("service.pid").run();
    EXPECT_EQ(relative.status, 3);
    EXPECT_EQ(relative.err,
              "Cannot write file 'service.pid'. Error: (2) No such file or directory\n");
}

TEST_P(SurroundingsE2eTest, TakesEveryNameExactlyAndCutsTextThatIsNoUtf8)
{
    const std::string names[] = {"a b  c", "it's \"x\"",          "a\nb=c,d",    "имя",
                                 "-x",     std::string(249, 'n'), "cut\xff.here"};
    for (const std::string& name : names) {
        const std::string used = name.substr(0, name.find('\xff'));
        const std::string home = dir / used;
        std::filesystem::create_directories(home + "/lib");
        std::filesystem::copy(SERVICE_JAR, home + "/lib");
        LauncherRun run = plainService("report,ready,wait", home + "/lib");
        run.arg("--pidfile=" + used + "/" + name).arg("--clog=" + dir / "log " + name);
        run.arg("--workdir=" + dir / name).arg("--instance=" + dir / name);
        const LauncherProcess target = run.start();
        EXPECT_TRUE(waitUntil([&] { return exists(used + "/ready"); })) << name;
        EXPECT_NE(content(used + "/start.report").find("Path '" + home + "'"), std::string::npos);
        EXPECT_EQ(launcher("stop").arg("--pidfile=" + home + "/" + name).run().status, 0) << name;
        EXPECT_EQ(target.waitForExit().status, 0);
        EXPECT_FALSE(exists(used + "/" + used));
        const LauncherLog written(dir / ("log " + used));
        EXPECT_EQ(written.malformed, "");
        EXPECT_EQ(written.last(), "INFO Normal exit exitCode=0");
    }
}

TEST_P(SurroundingsE2eTest, TakesPathsUpToTheLongestThatTheSystemHas)
{
    std::string deep = dir.path();
    while (deep.size() < PATH_MAX - 300) deep += "/" + std::string(200, 'd');
    std::filesystem::create_directories(deep);
    const std::string longest = deep + "/" + std::string(PATH_MAX - 2 - deep.size(), 'f');
    const std::string tooLong = longest + "f";
    for (const auto& [option, status] : {std::pair("pidfile", 3), {"clog", 1}, {"cout", 1}}) {
        LauncherRun run = plainService("");
        const std::string start = std::string("--") + option + "=";
        EXPECT_EQ(LauncherRun(run).arg(start + longest).run().status, 0) << option;
        const LauncherResult result = run.arg(start + tooLong).run();
        EXPECT_EQ(result.status, status);
        EXPECT_TRUE((result.out + result.err).ends_with("Error: (36) File name too long\n"));
    }
}

TEST_P(SurroundingsE2eTest, ACommandLineNearTheLimitOfTheKernelIsReadWhole)
{
    const std::pair<std::size_t, std::string> cases[] = {
        {1, "--jifacearg=" + std::string((128 << 10) - 13, 'x')},
        {80'000, "--jifacearg=x"},
    };
    for (const auto& [count, argument] : cases) {
        LauncherRun run = plainService("ready,wait");
        for (std::size_t i = 0; i < count; ++i) run.arg(argument);
        run.args("--pidfile service.pid");
        const LauncherProcess target = startReady(run);
        const std::string pid = std::to_string(target.pid);
        EXPECT_EQ(
            launcher("stop --timeout 0 --pid " + pid).run().err,
            "Launcher with PID=" + pid + " was forced to stop and its PID-file was removed\n");
        EXPECT_EQ(target.waitForExit().status, -SIGKILL);
    }
}

TEST_P(RightsE2eTest, IsAGoodFirstProcessOfAContainer)
{
    const auto becomeFirst = [] {
        leaveNamespaces(CLONE_NEWPID);
        goOnInChild();
        require(mount("proc", "/proc", "proc", 0, nullptr) == 0);
    };
    for (const bool byClient : {false, true}) {
        dir.write("service.pid", "1");  // of the container's former life
        const LauncherProcess container =
            startReady(service("start=child,ready,wait stop=release").before(becomeFirst));
        EXPECT_EQ(content("service.pid"), "1");
        const std::string outer = std::to_string(container.pid);
        const pid_t first =
            std::stoi("0" + readText("/proc/" + outer + "/task/" + outer + "/children"));
        if (byClient) {  // which dies with the container, when the first process ends
            std::ignore = stop([ns = "/proc/" + std::to_string(first) + "/ns/"] {
                const FileDescriptor mounts(open((ns + "mnt").c_str(), O_RDONLY));
                const FileDescriptor ids(open((ns + "pid").c_str(), O_RDONLY));
                require(setns(ids.get(), CLONE_NEWPID) == 0);
                require(setns(mounts.get(), CLONE_NEWNS) == 0);
                goOnInChild();
            });
        } else {
            kill(first, SIGUSR1);
        }
        EXPECT_EQ(container.waitForExit().status, 0);
        EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
        EXPECT_FALSE(exists("service.pid"));
    }
}

TEST_P(SurroundingsE2eTest, WhatAParentIgnoresOrBlocksIsNotInherited)
{
    const auto refuseSignals = [] {
        std::signal(SIGCHLD, SIG_IGN);
        std::signal(SIGPIPE, SIG_IGN);
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
    };
    LauncherRun run = service("start=child,ready,wait stop=release").args("--daemon");
    EXPECT_EQ(startReady(run.before(refuseSignals)).waitForExit().status, 0);
    const pid_t daemon = savedPid();
    EXPECT_EQ(stop(refuseSignals),
              "Launcher with PID=" + std::to_string(daemon) + " stopped gracefully\n");
    EXPECT_EQ(ChildProcesses::waitForExit(daemon), 100);

    // Nobody reads what the client says.
    const LauncherProcess target = startReady(service("start=ready,wait stop=release"));
    LauncherRun client = launcher("stop --pidfile service.pid");
    client.before([] {
        int ends[2] = {};
        require(pipe(ends) == 0 && dup2(ends[1], STDERR_FILENO) >= 0);
        close(ends[0]);
    });
    EXPECT_EQ(client.run().status, 0);
    EXPECT_EQ(target.waitForExit().status, 0);
}

TEST_P(RightsE2eTest, ALogThatMayNotBeRenamedEndsTheStart)
{
    std::filesystem::create_directory(dir / "d");  // of root alone
    const std::string file = dir.write("d/log", "");
    std::filesystem::permissions(file, std::filesystem::perms::all);
    const LauncherResult result =
        launcher("start --jvmdll x --clog d/log").before([] { becomeUser(); }).run();
    EXPECT_EQ(result.status, 10);
    EXPECT_EQ(result.err, "Cannot rotate launcher log: source '" + file + "', target '" + file +
                              ".1'. Error: (13) Permission denied\n");
}

using PlantsE2eTest = EndToEndTest;

TEST_F(PlantsE2eTest, NothingIsWrittenWhereOnlyALinkOfAStrangerLeads)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs the rights of root";
    constexpr uid_t kUser = 65534;
    std::filesystem::create_directory(dir / "plants");
    const auto setUp = [this](const std::string& target, uid_t owner) {
        std::filesystem::remove_all(dir / "place");
        std::filesystem::create_directory(dir / "place");
        std::filesystem::permissions(dir / "place", std::filesystem::perms::all);
        const std::string link = dir / "plants/link";
        std::filesystem::remove(link);
        std::filesystem::create_symlink("../" + target, link);
        ASSERT_EQ(lchown(link.c_str(), owner, 0), 0);
    };
    // A command, its status where it works, and where it must not.
    const std::string start = "start --jvmdll x --jclasspath x --pidfile=plants/link";
    std::vector<std::tuple<std::string, int, int>> cases{{start, 2, 3}, {start + "/file", 2, 3}};
    for (const std::string option : {"clog", "cout", "cerr", "cstd"}) {
        for (const std::string path : {"link", "link/file", "link/sub/file"}) {
            cases.emplace_back("stop --pid 999999999 --" + option + "=plants/" + path, 11, 1);
        }
    }
    openToAllUsers();
    for (const auto& [command, works, refused] : cases) {
        for (const auto& [owner, user] :
             {std::pair(kUser, 0U), {0U, 0U}, {1U, kUser}, {kUser, kUser}}) {
            setUp(command.ends_with("link") ? "place/file" : "place", owner);
            const auto become = [id = user] { require(setuid(id) == 0); };
            const LauncherResult result = launcher(command).before(become).run();
            const bool isAllowed = owner == user;
            EXPECT_EQ(result.status, isAllowed ? works : refused) << command;
            const std::string told = result.out + result.err;
            const bool isRefused = told.find("(40) Too many levels of symb") != told.npos;
            const bool isUntouched = std::filesystem::is_empty(dir / "place");
            EXPECT_TRUE(isAllowed ? !isRefused : isRefused && isUntouched) << command << told;
        }
    }
    EXPECT_EQ(launcher("stop --pid 999999999 --cout=/proc/self/fd/1").run().status, 11);
    EXPECT_EQ(launcher("stop --pid 999999999 --clog=/proc/self/cwd/log").run().status, 11);
}

TEST_F(PlantsE2eTest, APipeWorksIfSomebodyReadsIt)
{
    const std::string pipe = dir / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string option : {"--clog", "--cout", "--cerr", "--cstd"}) {
        const LauncherRun stop = launcher("stop --pid 999999999 " + option + " pipe");
        const LauncherResult unread = stop.run();
        EXPECT_EQ(unread.status, 1) << option;
        EXPECT_TRUE(unread.out.find(" not accessible") != unread.out.npos) << unread.out;

        const FileDescriptor reader(open(pipe.c_str(), O_RDONLY | O_NONBLOCK));
        std::string text(8192, ' ');
        std::jthread copy([&] {  // until the first end of what comes, as cat(1)
            pollfd event{reader.get(), POLLIN, 0};
            std::size_t size = 0;
            for (ssize_t more = 1; more > 0 && poll(&event, 1, -1) == 1;
                 size += static_cast<std::size_t>(more)) {
                more = read(reader.get(), text.data() + size, text.size() - size);
            }
            text.resize(size);
        });
        EXPECT_EQ(stop.run().status, 11) << option;
        copy.join();
        EXPECT_EQ(text.ends_with("exitCode=11\n"), option == "--clog") << text;
        EXPECT_EQ(text.ends_with("nothing was stopped\n"),
                  option == "--cerr" || option == "--cstd");
    }
}

TEST_P(SurroundingsE2eTest, OnlyTheOwnerCanWriteToItsFiles)
{
    LauncherRun run = service("start=ready,wait stop=release").args("--cout out --cerr err");
    const LauncherProcess target = startReady(run.before([] { umask(0); }));
    const std::pair<const char*, mode_t> files[] = {
        {"service.pid", 0644}, {"launcher.log", 0640}, {"out", 0640}, {"err", 0640}};
    for (const auto& [file, mode] : files) {
        struct stat status {};
        ASSERT_EQ(stat((dir / file).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, mode) << file;
    }
    expectEndAfter(SIGUSR1, target, 0);
}

TEST_P(SurroundingsE2eTest, TheJvmFindsNoFaultWithTheUseOfItsInterface)
{
    const std::tuple<std::string, int, int> cases[] = {
        {"start=report,ready,wait stop=release", SIGUSR1, 0},
        {"start=report,ready,wait stopFast=release", SIGUSR2, 0},
        {"start=ready,wait stop=release,throw", SIGUSR1, 9},
        {"start=ready,throw", 0, 8},
    };
    for (const auto& [script, signal, status] : cases) {
        const LauncherProcess launcher =
            startReady(service(script).args("--quiet --jifacearg a --jvmopt=-Xcheck:jni"));
        kill(launcher.pid, signal);
        const LauncherResult result = launcher.waitForExit();
        EXPECT_EQ(result.status, status) << script;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find("in native method"), std::string::npos) << result.err;
    }
}

}  // namespace
