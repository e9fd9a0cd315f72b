// What bites a program that has a JVM in its process.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

#include "EndToEndTest.h"

namespace {

using JvmE2eTest = JdkTest;
FOR_EACH_JDK(JvmE2eTest);

TEST_P(JvmE2eTest, TheFlightRecorderIsNoFastStopAndChildrenInheritNothing)
{
    LauncherRun run =
        service("start=sample,child,ready,wait stopFast=release java.io.tmpdir=" + dir / "");
    const LauncherProcess launcher = startReady(run.env("_JAVA_SR_SIGNUM", "12"));
    EXPECT_FALSE(log().holds("INFO SIGUSR2 has risen"));
    const std::string child = content("child");
    EXPECT_NE(child.find("\n_JAVA_SR_SIGNUM=12\n"), std::string::npos) << child;
    EXPECT_EQ(child.find("launcher.log"), std::string::npos) << child;
    expectEndAfter(SIGUSR2, launcher, 0);
    EXPECT_EQ(log().count("INFO SIGUSR2 has risen"), 1);
}

TEST_P(JvmE2eTest, TheStackSizeIsThatOfTheOptions)
{
    const auto depth = [this](const std::string& options) {
        LauncherRun run = service("start=depth").args("--jvmopt -Xint" + options);
        run.before([] {  // what an unlimited stack would be
            rlimit stack{};
            getrlimit(RLIMIT_STACK, &stack);
            stack.rlim_cur = std::min<rlim_t>(stack.rlim_max, 2 << 20);
            setrlimit(RLIMIT_STACK, &stack);
        });
        EXPECT_EQ(run.run().status, 0);
        return std::stol("0" + content("depth"));
    };
    const long usual = depth("");
    EXPECT_GT(usual, 1000);
    EXPECT_GT(depth(" --jvmopt -Xss64m"), 4 * usual);
    EXPECT_GT(depth(" --jvmopt -XX:ThreadStackSize=65536"), 4 * usual);
}

TEST_P(JvmE2eTest, AnOptionThatTheJvmSkipsIsToldInTheLog)
{
    const std::string skipped =
        " --jvmopt -jar --jvmopt no.jar --jvmopt --add-opens --jvmopt a/b=c";
    EXPECT_EQ(service("start=report").args(skipped + " --jvmopt -Xmx64m").run().status, 0);
    EXPECT_EQ(log().count("WARN JVM argument has no effect"), 2);
    EXPECT_TRUE(
        log().holds("WARN JVM argument has no effect JVM argument=--add-opens, "
                    "instead='one word, --add-opens=VALUE'"));
}

TEST_P(JvmE2eTest, AStormOfSignalsIsHarmless)
{
    const LauncherProcess launcher =
        startReady(service("start=ready,until:go", "service.Service$NoStop"));
    for (int i = 0; i < 2000; ++i) {
        for (const int signal : {SIGUSR1, SIGUSR2, SIGINT}) kill(launcher.pid, signal);
    }
    dir.write("go", "");
    EXPECT_EQ(launcher.waitForExit().status, 0);
    EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
}

TEST_P(JvmE2eTest, TheStatusOfSystemExitSurvivesAStop)
{
    for (int round = 0; round < 20; ++round) {
        expectEndAfter(SIGUSR1, startReady(service("start=ready,exit:7")), 7);
    }
}

TEST_P(JvmE2eTest, TheApplicationIsNotStoppedInACrash)
{
    const LauncherProcess launcher = startReady(service("start=ready,wait stop=report,release"));
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(launcher.pid) + "/task")) {
        const std::string name = readText(task.path() / "comm");
        if (name != "Signal Dispatch\n") continue;  // sleeps: its crash holds up nobody else
        tgkill(launcher.pid, std::stoi(task.path().filename()), SIGSEGV);
    }
    EXPECT_EQ(launcher.waitForExit().status, -SIGABRT);
    EXPECT_FALSE(exists("stop.report"));
}

TEST_P(JvmE2eTest, TerminationIsForTheJvm)
{
    const LauncherProcess launcher = startReady(service("start=hook,ready,wait"));
    expectEndAfter(SIGTERM, launcher, 128 + SIGTERM);
    EXPECT_TRUE(exists("hook"));
    EXPECT_EQ(savedPid(), launcher.pid);
    EXPECT_TRUE(log().holds("WARN JVM exited with nonzero exit code pid=" +
                            std::to_string(launcher.pid) + ", exitCode=143"));
}

}  // namespace
