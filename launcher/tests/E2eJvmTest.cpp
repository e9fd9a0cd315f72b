// What bites a program that has a JVM in its process: with every JDK.
#include <sys/stat.h>
#include <unistd.h>

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
        // What an unlimited stack would be.
        EXPECT_EQ(run.shell("ulimit -s 2048 && exec \"$@\"").run().status, 0);
        return std::stol("0" + content("depth"));
    };
    const long usual = depth("");
    EXPECT_GT(usual, 1000);
    EXPECT_GT(depth(" --jvmopt -Xss64m"), 4 * usual);
}

TEST_P(JvmE2eTest, OptionsThatItSkipsOrRefusesAreInTheLog)
{
    const std::string skipped = "--jvmopt -jar --jvmopt no.jar --jvmopt --add-opens --jvmopt a/b=c";
    EXPECT_EQ(service("start=report").args(skipped).run().status, 0);
    EXPECT_EQ(log().count("WARN JVM argument has no effect"), 2);
    EXPECT_TRUE(
        log().holds("WARN JVM argument has no effect JVM argument=--add-opens, "
                    "instead='one word, --add-opens=VALUE'"));

    const LauncherResult refused = service().args("--jvmopt -Xms2g --jvmopt=-Xmx1g").run();
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE((refused.out + refused.err).find("heap size"), std::string::npos) << refused.err;
    EXPECT_TRUE(log().holds("INFO JVM argument JVM argument=-Xmx1g"));
}

TEST_P(JvmE2eTest, ItsEndOfTheProcessGivesTheStatus)
{
    const std::string exited = "WARN JVM exited with nonzero exit code pid=";
    const std::pair<std::string, int> cases[] = {
        {"start=exit:0", 0},
        {"start=halt:3", 3},
    };
    for (const auto& [script, status] : cases) {
        EXPECT_EQ(service(script).run().status, status) << script;
        const std::string end = ", exitCode=" + std::to_string(status);
        EXPECT_TRUE(log().holds(exited + content("service.pid") + end)) << script;
        EXPECT_TRUE(log().holds("INFO JVM exited")) << script;
    }
    for (int round = 0; round < 20; ++round) {  // nor does a stop change it
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
    EXPECT_TRUE(log().holds("WARN JVM halted pid=" + std::to_string(launcher.pid)));
    EXPECT_TRUE(log().holds("INFO JVM exited"));
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

TEST_P(JvmE2eTest, WhatAParentIgnoresBlocksOrMasksIsNotInherited)
{
    LauncherRun run = service("start=child,ready,wait stop=release").before([] {
        umask(0);
        for (const int number : {SIGCHLD, SIGPIPE}) std::signal(number, SIG_IGN);
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
    });
    EXPECT_EQ(startReady(run.args("--daemon --cout out --cerr err")).waitForExit().status, 0);
    const std::pair<const char*, mode_t> files[] = {
        {"service.pid", 0644}, {"launcher.log", 0640}, {"out", 0640}, {"err", 0640}};
    for (const auto& [file, mode] : files) {
        struct stat status {};
        ASSERT_EQ(stat((dir / file).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, mode) << file;
    }
    const pid_t daemon = savedPid();
    const LauncherRun stop = launcher("stop --pidfile service.pid").before([] {
        int ends[2] = {};
        if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0) _exit(125);
        close(ends[0]);  // nobody reads what it says
    });
    EXPECT_EQ(stop.run().status, 0);
    EXPECT_EQ(ChildProcesses::waitForExit(daemon), 100);
}

}  // namespace
