#include "EndToEndTest.h"

namespace {

using StopE2eTest = JdkTest;
FOR_EACH_JDK(StopE2eTest);

TEST_P(StopE2eTest, EndsWithAStatusThatTellsHowItWent)
{
    for (const std::string method : {"stop", "stopFast"}) {
        const std::string thrown = "Java exception while invoking service/Service.";
        const std::string text = ": java.lang.IllegalStateException: не вышло 😀\n    ";
        const std::string client = "stop --pidfile service.pid";
        const LauncherRun request = launcher(method == "stop" ? client : client + " --fast");
        const std::tuple<std::string, int, std::string> cases[] = {
            {"start=ready,wait " + method + "=report,release", 0, ""},
            {"start=ready,wait,throw " + method + "=report,release", 8, thrown + "start" + text},
            {"start=ready,wait " + method + "=report,release,throw", 9,
             "Service stop method failed: " + thrown + method + text},
        };
        for (const auto& [script, status, error] : cases) {
            const LauncherProcess foreground = startReady(service(script));
            EXPECT_EQ(request.run().status, 0);
            const LauncherResult result = foreground.waitForExit();
            EXPECT_EQ(result.status, status) << script;
            EXPECT_EQ(result.err.substr(0, error.size()), error);
            EXPECT_EQ(content(method + ".report"), "launcher-stop-thread\n");

            const LauncherProcess parent = startReady(service(script).args("--daemon"));
            EXPECT_EQ(parent.waitForExit().status, 0);
            const pid_t daemon = savedPid();
            EXPECT_EQ(request.run().err,
                      "Launcher with PID=" + std::to_string(daemon) + " stopped gracefully\n");
            const int ownStatus = (method == "stop" ? 100 : 200) + status;
            EXPECT_EQ(ChildProcesses::waitForExit(daemon), ownStatus) << script;
            EXPECT_TRUE(log().last().ends_with("exitCode=" + std::to_string(ownStatus)));
            EXPECT_FALSE(exists("service.pid"));
        }
    }
}

TEST_P(StopE2eTest, UnderstandsEverySignal)
{
    const std::tuple<int, std::string, std::string> cases[] = {
        {SIGUSR1, "SIGUSR1", "simple stop"},
        {SIGUSR2, "SIGUSR2", "stop fast"},
        {SIGINT, "SIGINT", "simple stop"},
    };
    for (const auto& [signal, risen, stopType] : cases) {
        const LauncherProcess target =
            startReady(service("start=ready,wait stop=release stopFast=release"));
        expectEndAfter(signal, target, 0);
        EXPECT_EQ(log().tid, target.pid);
        EXPECT_EQ(log().count("INFO " + risen + " has risen"), 1);
        EXPECT_TRUE(log().holds("INFO Got an event. stopType=" + stopType));
        EXPECT_TRUE(log().holds("INFO Service stop method finished successfully."));
        EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
    }
}

TEST_P(StopE2eTest, GoesOnWithoutAMethodForTheRequest)
{
    for (const bool daemon : {false, true}) {
        std::filesystem::remove(dir / "go");
        LauncherRun run = service("start=ready,until:go", "service.Service$NoStop");
        const LauncherProcess launcher = startReady(daemon ? run.args("--daemon") : run);
        const pid_t pid = savedPid();
        for (const auto& [signal, fast] : {std::pair(SIGUSR2, "true"), {SIGUSR1, "false"}}) {
            kill(pid, signal);
            const std::string record = "INFO Service stop method not fount. stopFast=";
            EXPECT_TRUE(waitUntil([&, end = fast] { return log().holds(record + end); }));
        }
        dir.write("go", "");
        EXPECT_EQ(ChildProcesses::waitForExit(pid), daemon ? 100 : 0);
        EXPECT_FALSE(exists("service.pid"));
    }
}

TEST_P(StopE2eTest, AStopDuringTheStartIsNeitherDeadlyNorLost)
{
    const LauncherRun run = service("", "service.Service$Loop");
    for (const int signal : {SIGUSR1, SIGUSR2, SIGINT}) {
        for (int round = 0; round < 4; ++round) {
            const LauncherProcess launcher = run.start();
            EXPECT_TRUE(waitUntil([&] { return savedPid() == launcher.pid; }));
            if (round % 2 == 1) {  // while the JVM is being created
                EXPECT_TRUE(waitUntil([this] { return log().holds("INFO JVM argument"); }));
            }
            expectEndAfter(signal, launcher, 0);
            EXPECT_FALSE(exists("service.pid"));

            const LauncherProcess failing =
                service("stop=report", "service.Service$NoStart").start();
            EXPECT_TRUE(waitUntil([&] { return savedPid() == failing.pid; }));
            expectEndAfter(signal, failing, 8);
            EXPECT_FALSE(exists("stop.report"));
        }
    }
}

TEST_P(StopE2eTest, KillsAfterTheTimeOut)
{
    const LauncherProcess target = startReady(service("start=ready,wait"));
    const std::string pid = std::to_string(target.pid);
    const LauncherResult result = launcher("stop --timeout 250 --clog stop.log --pid " + pid).run();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "Launcher with PID=" + pid + " was forced to stop and its PID-file was removed\n");
    EXPECT_EQ(target.waitForExit().status, -SIGKILL);
    EXPECT_FALSE(exists("service.pid"));
    const std::string record = "INFO A stop request was sent to another launcher instance ";
    EXPECT_TRUE(
        LauncherLog(dir / "stop.log").holds(record + "pidToStop=" + pid + ", timeoutMillis=250"));
}

}  // namespace
