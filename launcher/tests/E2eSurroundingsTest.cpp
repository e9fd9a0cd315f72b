// The launcher where the system gives it less than usual: few rights, little room,
// odd names, nothing of its parent. Single calls that fail are tried in launcher/faults.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "EndToEndTest.h"
#include "FileDescriptor.h"

namespace {

#ifndef __has_feature  // clang tells by it of what GCC has a macro for
#define __has_feature(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// For LauncherRun::shell().
const std::string becomeNobody = R"(exec setpriv --reuid=65534 --regid=65534 --clear-groups "$@")";

/// What `script` mounts, nobody else sees.
std::string apart(const std::string& script)
{
    return "exec unshare --mount sh -c '" + script + R"(' sh "$@")";
}

class SurroundingsE2eTest : public JdkTest {
protected:
    /// A start that names no file but those of Java.
    [[nodiscard]] LauncherRun plainService(const std::string& start, const std::string& jar) const
    {
        LauncherRun run = launcher("start --quiet --jifaceclass service.Service").withJvm();
        run.args("--jvmopt=-Dstop=release --jvmopt=-Dstart=" + start + " --jvmdll=" + library);
        return run.arg("--jclasspath=" + jar);
    }
    /// Asks the service of the PID file to stop.
    [[nodiscard]] LauncherResult stop(const std::string& script) const
    {
        return launcher("stop --pidfile").arg(dir / "service.pid").shell(script).run();
    }
};
// What the system refuses it refuses with every JDK.
FOR_NEWEST_JDK(SurroundingsE2eTest);

class RightsE2eTest : public SurroundingsE2eTest {
protected:
    void SetUp() override
    {
        const std::string script = "unshare --pid --fork true && " + apart(becomeNobody);
        const LauncherResult attempt = launcher("").program("/bin/true").shell(script).run();
        if (attempt.status != 0) GTEST_SKIP() << "needs more rights: " << attempt.err;
        openToAllUsers();
    }
};
FOR_NEWEST_JDK(RightsE2eTest);

TEST_P(RightsE2eTest, ClosedStreamsTakeNoFileOfTheLauncher)
{
    for (const bool hasDevices : {true, false}) {
        const std::string hide = hasDevices ? "" : "mount -t tmpfs none /dev && ";
        LauncherRun run = service("start=ready,wait stop=release");
        run.shell(apart(hide + R"(exec "$@" <&- >&- 2>&-)"));
        const LauncherProcess launcher = startReady(run);
        for (const char* stream : {"0", "1", "2"}) {
            const std::string link = "/proc/" + std::to_string(launcher.pid) + "/fd/" + stream;
            EXPECT_EQ(std::filesystem::read_symlink(link), hasDevices ? "/dev/null" : "/");
        }
        expectEndAfter(SIGUSR1, launcher, 0);
    }
}

TEST_P(RightsE2eTest, ALauncherOfAnotherUserIsLeftAloneAlsoWhereProcHidesIt)
{
    const LauncherProcess target = startReady(service("start=ready,wait stop=release"));
    const std::string pid = std::to_string(target.pid);
    const std::string hide = "mount -t proc -o hidepid=2 proc /proc && ";
    for (const std::string& become : {becomeNobody, apart(hide + becomeNobody)}) {
        LauncherRun another = launcher("start --jvmdll x --jclasspath x --pidfile service.pid");
        const LauncherResult start = another.shell(become).run();
        EXPECT_EQ(start.status, 3);
        EXPECT_TRUE(start.err.starts_with("PID file exists and the process with PID")) << start.err;
        const LauncherResult refused = stop(become);
        EXPECT_EQ(refused.status, 12);
        EXPECT_EQ(refused.err, "Launcher is not permitted to stop process with PID=" + pid + "\n");
    }
    EXPECT_EQ(content("service.pid"), pid);
    expectEndAfter(SIGUSR1, target, 0);
}

TEST_P(SurroundingsE2eTest, AStartUnderATightLimitWorksOrTells)
{
    if (kSanitized) GTEST_SKIP() << "the sanitizers take more than the limits";
    openToAllUsers();
    // Root has as many threads as it wants, and nobody else is this user.
    const std::string user = geteuid() == 0 ? " setpriv --reuid=199999 --clear-groups" : "";
    const auto limit = [user](const std::string& name, const std::string& value) {
        return "exec prlimit --" + name + "=" + value + (name == "nproc" ? user : "") + R"( "$@")";
    };
    // Each ends a start elsewhere, or just does not.
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"nofile", {"4", "6", "8"}},
        // Not 128 KiB, where JDK 25 crashes now and then in any program.
        {"stack", {"65536", "196608"}},
        {"as", {"12000000", "400000000", "1000000000", "4000000000"}},
        {"nproc", {"1", "5", "9", "17", "18", "20"}},
    };
    for (const auto& [name, values] : cases) {
        for (const std::string& value : values) {
            std::filesystem::remove(dir / "start.report");
            const LauncherResult result = service("start=report").shell(limit(name, value)).run();
            const bool works = result.status == 0 && exists("start.report");
            EXPECT_TRUE(works || (result.status > 0 && !(result.out + result.err).empty()))
                << name << " " << value << ": " << result.status;
            // The PID file stays only where the JVM has ended the process.
            const bool isLeft = std::filesystem::remove(dir / "service.pid");
            EXPECT_TRUE(!isLeft || log().holds("INFO JVM exited")) << name << " " << value;
        }
    }
    // The end of the log does not fit; then no PID file, nor any message.
    EXPECT_EQ(service().shell(limit("fsize", "4096")).run().status, 0);
    EXPECT_EQ(content("launcher.log").size(), 4096U);
    EXPECT_EQ(service().shell(limit("fsize", "0")).run().status, 3);
    EXPECT_FALSE(exists("service.pid"));

    const LauncherProcess target = startReady(service("start=ready,wait stop=release"));
    EXPECT_EQ(stop(limit("nofile", "6")).status, 0);
    EXPECT_EQ(target.waitForExit().status, 0);
}

TEST_P(SurroundingsE2eTest, NeedsNoEnvironmentAndNoDirectory)
{
    const std::string loseAll = R"(mkdir gone$$ && cd gone$$ && rmdir ../gone$$ &&
        exec env -i ASAN_OPTIONS="$ASAN_OPTIONS" "$@")";
    const auto start = [&](const std::string& pidFile) {
        LauncherRun run = plainService("ready,wait", serviceJar).arg("--pidfile=" + pidFile);
        return run.arg("--workdir=" + dir.path().string()).shell(loseAll);
    };
    const LauncherProcess target = startReady(start(dir / "service.pid"));
    EXPECT_EQ(stop(loseAll).status, 0);
    EXPECT_EQ(target.waitForExit().status, 0);
    EXPECT_FALSE(exists("service.pid"));
    const LauncherResult relative = start("service.pid").run();
    EXPECT_EQ(relative.status, 3);
    EXPECT_EQ(relative.err,
              "Cannot write file 'service.pid'. Error: (2) No such file or directory\n");
}

TEST_P(SurroundingsE2eTest, TakesEveryNameExactlyAndCutsTextThatIsNoUtf8)
{
    for (const std::string name : {"-a b  c", "it's \"x\"\nb=c,d имя", "cut\xff.here"}) {
        const std::string used = name.substr(0, name.find('\xff'));
        const std::string home = dir / used, lib = home + "/lib";
        std::filesystem::create_directories(lib);
        std::filesystem::copy(serviceJar, lib);
        LauncherRun run = plainService("report,ready,wait", lib);
        run.arg("--pidfile=" + used + "/" + name).arg("--clog=" + dir / "log " + name);
        run.arg("--workdir=" + dir / name).arg("--instance=" + dir / name);
        const LauncherProcess target = run.start();
        EXPECT_TRUE(waitUntil([&] { return exists(used + "/ready"); })) << name;
        EXPECT_NE(content(used + "/start.report").find("Path '" + home + "'"), std::string::npos);
        EXPECT_EQ(launcher("stop").arg("--pidfile=" + home + "/" + name).run().status, 0) << name;
        EXPECT_EQ(target.waitForExit().status, 0);
        EXPECT_FALSE(exists(used + "/" + used));
        EXPECT_EQ(LauncherLog(dir / ("log " + used)).last(), "INFO Normal exit exitCode=0");
    }
}

TEST_P(SurroundingsE2eTest, TakesPathsUpToTheLongestThatTheSystemHas)
{
    std::string path = dir.path();
    while (path.size() < PATH_MAX - 200) path += "/" + std::string(100, 'd');
    std::filesystem::create_directories(path);
    path += "/" + std::string(PATH_MAX - 2 - path.size(), 'f');
    for (const auto& [option, status] : {std::pair("pidfile", 3), {"clog", 1}, {"cout", 1}}) {
        LauncherRun run = plainService("", serviceJar).args(std::string("--") + option);
        EXPECT_EQ(LauncherRun(run).arg(path).run().status, 0) << option;
        const LauncherResult result = run.arg(path + "f").run();
        EXPECT_EQ(result.status, status);
        EXPECT_TRUE((result.out + result.err).ends_with("Error: (36) File name too long\n"));
    }
}

TEST_P(SurroundingsE2eTest, ACommandLineNearTheLimitOfTheKernelIsReadWhole)
{
    LauncherRun run = plainService("ready,wait", serviceJar);
    for (int i = 0; i < 80'000; ++i) run.arg("--jifacearg=x");
    const LauncherProcess target = startReady(run.args("--pidfile service.pid"));
    const std::string pid = std::to_string(target.pid);
    EXPECT_EQ(launcher("stop --timeout 0 --clog stop.log --pid " + pid).run().err,
              "Launcher with PID=" + pid + " was forced to stop and its PID-file was removed\n");
    EXPECT_EQ(target.waitForExit().status, -SIGKILL);
    const std::string record = "INFO A stop request was sent to another launcher instance ";
    EXPECT_TRUE(
        LauncherLog(dir / "stop.log").holds(record + "pidToStop=" + pid + ", timeoutMillis=0"));
}

TEST_P(RightsE2eTest, IsAGoodFirstProcessOfAContainer)
{
    dir.write("service.pid", "1");  // of the container's former life
    LauncherRun run = service("start=child,ready,wait stop=release");
    const LauncherProcess container =
        startReady(run.shell(R"(exec unshare --pid --mount-proc --fork --kill-child "$@")"));
    EXPECT_EQ(content("service.pid"), "1");
    const std::string outer = std::to_string(container.pid);
    const pid_t first =
        std::stoi("0" + readText("/proc/" + outer + "/task/" + outer + "/children"));
    // The client dies with the container, when the first process ends.
    std::ignore = stop("exec nsenter --pid --mount --target " + std::to_string(first) + R"( "$@")");
    EXPECT_EQ(container.waitForExit().status, 0);
    EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
    EXPECT_FALSE(exists("service.pid"));
}

using PlantsE2eTest = EndToEndTest;

TEST_F(PlantsE2eTest, NothingIsWrittenWhereOnlyALinkOfAStrangerLeads)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs the rights of root";
    // A command, its status where it works, and where it must not.
    const std::string stop = "stop --pid 999999999 ";
    const std::tuple<std::string, int, int> cases[] = {
        {"start --jvmdll x --jclasspath x --pidfile=link", 2, 3},
        {stop + "--clog=link/sub/file", 11, 1},
        {stop + "--cout=link/file", 11, 1},
        {stop + "--cstd=link", 11, 1},
    };
    for (const auto& [command, works, refused] : cases) {
        const std::string target = command.ends_with("link") ? "place/file" : "place";
        const auto run = [&, words = command](const std::string& owner) {
            return launcher(words)
                .shell("rm -rf place link && mkdir place && ln -s " + target +
                       " link && chown -h " + owner + R"( link && exec "$@")")
                .run();
        };
        EXPECT_EQ(run("root").status, works) << command;
        const LauncherResult result = run("nobody");
        EXPECT_EQ(result.status, refused) << command;
        const std::string told = result.out + result.err;
        EXPECT_NE(told.find("(40) Too many levels of symb"), std::string::npos) << told;
        EXPECT_TRUE(std::filesystem::is_empty(dir / "place")) << command;
    }
    EXPECT_EQ(launcher(stop + "--cout=/proc/self/fd/1").run().status, 11);
    EXPECT_EQ(launcher(stop + "--clog=/proc/self/cwd/log").run().status, 11);
}

TEST_F(PlantsE2eTest, APipeWorksIfSomebodyReadsIt)
{
    const std::string pipe = dir / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string option : {"--clog", "--cstd"}) {
        const LauncherRun stop = launcher("stop --pid 999999999 " + option + " pipe");
        const LauncherResult unread = stop.run();
        EXPECT_EQ(unread.status, 1) << option;
        EXPECT_NE(unread.out.find(" not accessible"), std::string::npos) << unread.out;

        const FileDescriptor reader(open(pipe.c_str(), O_RDONLY | O_NONBLOCK));
        EXPECT_EQ(stop.run().status, 11) << option;
        std::string text(1 << 16, '\0');  // as much as a pipe holds
        text.resize(static_cast<std::size_t>(read(reader.get(), text.data(), text.size())));
        EXPECT_TRUE(text.ends_with(option == "--clog" ? "exitCode=11\n" : "nothing was stopped\n"))
            << text;
    }
}

}  // namespace
