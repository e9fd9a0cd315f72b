#include "EndToEndTest.h"

namespace {

using StartE2eTest = JdkTest;
FOR_EACH_JDK(StartE2eTest);

std::string report(bool quiet, bool daemon, const std::string& instanceRoot)
{
    const auto text = [](bool value) { return value ? "'true'\n" : "'false'\n"; };
    return std::string("launcher-start-thread\ndaemon Boolean ") + text(daemon) +
           "instance.root Path '" + instanceRoot + "'\nquiet Boolean " + text(quiet);
}

TEST_P(StartE2eTest, HandsArgumentsAndPropertiesOverExactly)
{
    const std::string root = dir.path(), odd = "a=😀, '\"\\";
    LauncherRun run = service("start=report").args("--quiet --instance " + root);
    run.args("--jifacearg имя --jifacearg=中文 --jifacearg").arg("").arg("--jifacearg=" + odd);
    EXPECT_EQ(run.run().status, 0);
    EXPECT_EQ(content("start.report"),
              report(true, false, root) + "arg имя\narg 中文\narg \narg " + odd + "\n");
    EXPECT_TRUE(log().holds("INFO JMethod called successfully"));

    EXPECT_EQ(service("start=report").run().status, 0);
    EXPECT_EQ(content("start.report"), report(false, false, ""));

    run = service("start=ready,until:go,report").args("--daemon --procname=aслужба-имя");
    EXPECT_EQ(startReady(run).waitForExit().out, "");
    const pid_t daemon = savedPid();
    EXPECT_EQ(readText("/proc/" + std::to_string(daemon) + "/comm"), "aслужба-\n");
    dir.write("go", "");
    EXPECT_EQ(ChildProcesses::waitForExit(daemon), 0);
    EXPECT_EQ(content("start.report"), report(true, true, ""));
    EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
}

TEST_P(StartE2eTest, CallsTheFormThatTheClassHas)
{
    EXPECT_EQ(service("start=report", "service.Service$NoStop").run().status, 0);
    EXPECT_EQ(content("start.report"), "launcher-start-thread\n");
    const std::string variant = "TwoArgumentsMethodVariant(start)";
    EXPECT_TRUE(log().holds("INFO Unable to use variant of jmethod variant=" + variant));
    expectFailure(service("", "java.lang.String"), 8, "Cannot find any method of: start, start\n");
}

TEST_P(StartE2eTest, RendersTheExceptionOfTheService)
{
    const LauncherResult result = service("start=throw").run();
    EXPECT_EQ(result.status, 8);
    const std::string thrown =
        "java.lang.IllegalStateException: не вышло 😀\n    service.Service.fail(Service.java:";
    const std::string message = "Java exception while invoking service/Service.start: " + thrown;
    EXPECT_EQ(result.err.substr(0, message.size()), message);
    const std::string cause = "\nCaused by: ";
    const std::size_t at = result.err.find(cause + "java.lang.IllegalArgumentException: причина\n");
    EXPECT_NE(at, std::string::npos);
    EXPECT_EQ(result.err.rfind(cause), at);  // its cause is the first one again
    const std::string method = "callingClassName=service/Service, callingMethodName=start, ";
    EXPECT_TRUE(
        log().holds("ERROR JMethod thrown " + method + "javaExceptionMessage='\n" + thrown));
    EXPECT_EQ(log().last(), "ERROR " + result.err.substr(0, result.err.size() - 1) + " exitCode=8");
    EXPECT_FALSE(exists("service.pid"));
}

TEST_P(StartE2eTest, EndsWithTheStatusOfTheService)
{
    const std::string exited = "WARN JVM exited with nonzero exit code pid=";
    const std::tuple<std::string, int, std::string, std::string> cases[] = {
        {"start=exit:0", 0, exited, ", exitCode=0"},
        {"start=exit:7", 7, exited, ", exitCode=7"},
        {"start=halt:3", 3, exited, ", exitCode=3"},
        {"start=crash", -SIGABRT, "WARN JVM halted pid=", ""},
    };
    for (const auto& [script, status, record, end] : cases) {
        EXPECT_EQ(service(script).run().status, status) << script;
        EXPECT_TRUE(log().holds(record + content("service.pid") + end)) << script;
        EXPECT_TRUE(log().holds("INFO JVM exited")) << script;
    }
}

TEST_P(StartE2eTest, WaitsForTheThreadsOfTheServiceAndRemovesThePidFileWhereItIs)
{
    const LauncherProcess launcher =
        service("start=thread:../go").args("--workdir " + dir / "work").start();
    EXPECT_TRUE(waitUntil([this] { return log().holds("INFO Destroying JVM."); }));
    EXPECT_EQ(savedPid(), launcher.pid);
    dir.write("go", "");
    EXPECT_EQ(launcher.waitForExit().status, 0);
    EXPECT_TRUE(log().holds("INFO JVM destroyed"));
    EXPECT_FALSE(exists("service.pid"));
}

TEST_P(StartE2eTest, IsRefusedWhileThePidFileBelongsToARunningLauncher)
{
    const LauncherRun run = service("start=ready,wait stop=release");
    const LauncherProcess first = startReady(run);
    const LauncherResult second = run.run();
    EXPECT_EQ(second.status, 3);
    EXPECT_EQ(second.out, "");
    EXPECT_EQ(second.err, "PID file exists and the process with PID referenced there is running\n");
    EXPECT_EQ(content("service.pid"), std::to_string(first.pid));
    expectEndAfter(SIGUSR1, first, 0);
    EXPECT_FALSE(exists("service.pid"));
}

TEST_P(StartE2eTest, PrintsAHeaderInTheLanguageOfTheUser)
{
    const auto header = [this](const std::string& verb) {  // of the run before
        const std::string pid = std::to_string(log().tid);
        return "launcher " + verb + " (launcher 3.11.1+4, x86-64), PID=" + pid + "\n";
    };
    const std::string english = service().run().out;
    EXPECT_EQ(english, header("started"));
    EXPECT_EQ(service().args("--cout out").run().out, "");
    EXPECT_EQ(content("out"), header("started"));
    EXPECT_EQ(service().args("--quiet").run().out, "");
    const std::string russian = service().env("LC_ALL", "ru_RU.UTF-8").run().out;
    EXPECT_EQ(russian, header("запущен"));
    EXPECT_EQ(log().last(), "INFO Нормальное завершение работы exitCode=0");
}

}  // namespace
