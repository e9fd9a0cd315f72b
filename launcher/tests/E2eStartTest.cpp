#include "EndToEndTest.h"

namespace {

using StartE2eTest = JdkTest;
FOR_NEWEST_JDK(StartE2eTest);  // what differs between JDKs is in E2eJvmTest.cpp

TEST_P(StartE2eTest, HandsArgumentsAndPropertiesOverExactly)
{
    const auto report = [](const std::string& root, const std::string& isDaemon) {
        return "launcher-start-thread\ndaemon Boolean '" + isDaemon + "'\ninstance.root Path '" +
               root + "'\nquiet Boolean '" + isDaemon + "'\n";
    };
    const std::string root = dir.path(), odd = "a=😀, '\"\\";
    LauncherRun run = service("start=report").args("--instance " + root);
    run.args("--jifacearg имя --jifacearg=中文 --jifacearg").arg("").arg("--jifacearg=" + odd);
    const LauncherProcess launcher = run.start();
    EXPECT_EQ(launcher.waitForExit().out, "launcher started (launcher 3.11.1+4, x86-64), PID=" +
                                              std::to_string(launcher.pid) + "\n");
    EXPECT_EQ(content("start.report"),
              report(root, "false") + "arg имя\narg 中文\narg \narg " + odd + "\n");

    run = service("start=ready,until:go,report").args("--daemon --procname=aслужба-имя");
    EXPECT_EQ(startReady(run).waitForExit().out, "");
    const pid_t daemon = savedPid();
    EXPECT_EQ(readText("/proc/" + std::to_string(daemon) + "/comm"), "aслужба-\n");
    dir.write("go", "");
    EXPECT_EQ(ChildProcesses::waitForExit(daemon), 0);
    EXPECT_EQ(content("start.report"), report("", "true"));
    EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
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

}  // namespace
