#include "EndToEndTest.h"

namespace {

using StopE2eTest = JdkTest;
FOR_EACH_JDK(StopE2eTest);  // each has handlers of its own, and checks the use of its interface

TEST_P(StopE2eTest, EndsWithAStatusThatTellsHowItWentAndWithoutAFaultInTheUseOfTheJvm)
{
    const std::string thrown = "Java exception while invoking service/Service.";
    const std::string text = ": java.lang.IllegalStateException: не вышло 😀\n    ";
    const auto expectEnd = [this](const std::string& script, bool fast, bool daemon, int failure,
                                  const std::string& error) {
        LauncherRun run = service(script).args("--jifacearg a --jvmopt=-Xcheck:jni");
        const LauncherProcess first = startReady(run.args(daemon ? "--daemon" : "--quiet"));
        EXPECT_EQ(daemon ? first.waitForExit().status : 0, 0);
        const LauncherProcess target{savedPid(), first.streams};
        const std::string client = "stop --pidfile service.pid";
        EXPECT_EQ(launcher(fast ? client + " --fast" : client).run().err,
                  "Launcher with PID=" + std::to_string(target.pid) + " stopped gracefully\n");
        const LauncherResult result = target.waitForExit();
        const int base = fast ? 200 : 100;
        EXPECT_EQ(result.status, daemon ? base + failure : failure) << script;
        EXPECT_TRUE(log().last().ends_with("exitCode=" + std::to_string(result.status)));
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(result.err.starts_with(error)) << result.err;
        EXPECT_EQ(result.err.find("in native method"), std::string::npos) << result.err;
        EXPECT_FALSE(exists("service.pid"));
    };
    for (const bool daemon : {false, true}) {
        for (const std::string method : {"stop", "stopFast"}) {
            const bool fast = method == "stopFast";
            const std::string stop = " " + method + "=report,release";
            expectEnd("start=report,ready,wait" + stop, fast, daemon, 0, "");
            EXPECT_EQ(content(method + ".report"), "launcher-stop-thread\narg a\n");
            expectEnd("start=ready,wait,throw" + stop, fast, daemon, 8, thrown + "start" + text);
            expectEnd("start=ready,wait" + stop + ",throw", fast, daemon, 9,
                      "Service stop method failed: " + thrown + method + text);
        }
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
        EXPECT_TRUE(log().holds("INFO Unable to use variant of jmethod variant=TwoArguments"));
        dir.write("go", "");
        EXPECT_EQ(ChildProcesses::waitForExit(pid), daemon ? 100 : 0);
    }
}

TEST_P(StopE2eTest, AStopDuringTheStartIsNeitherDeadlyNorLost)
{
    const std::tuple<int, std::string, std::string> cases[] = {
        {SIGUSR1, "SIGUSR1", "simple stop"},
        {SIGUSR2, "SIGUSR2", "stop fast"},
        {SIGINT, "SIGINT", "simple stop"},
    };
    for (const auto& [signal, name, stopType] : cases) {
        for (const bool isLater : {false, true}) {
            const LauncherProcess launcher = service("", "service.Service$Loop").start();
            EXPECT_TRUE(waitUntil([&] { return savedPid() == launcher.pid; }));
            if (isLater) {  // while the JVM is being created
                EXPECT_TRUE(waitUntil([this] { return log().holds("INFO JVM argument"); }));
            }
            expectEndAfter(signal, launcher, 0);
            EXPECT_EQ(log().count("INFO " + name + " has risen"), 1);
            EXPECT_TRUE(log().holds("INFO Got an event. stopType=" + stopType));
            EXPECT_TRUE(log().holds("INFO Service stop method finished successfully."));
            EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
            EXPECT_EQ(log().tid, launcher.pid);
            EXPECT_FALSE(exists("service.pid"));

            const LauncherProcess failing =
                service("stop=report", "service.Service$NoStart").start();
            EXPECT_TRUE(waitUntil([&] { return savedPid() == failing.pid; }));
            expectEndAfter(signal, failing, 8);
            EXPECT_FALSE(exists("stop.report"));
        }
    }
}

}  // namespace
