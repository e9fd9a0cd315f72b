// EndToEndTest: ground of the tests that run the launcher itself. A test has a
// directory of its own, in which all its runs start and keep their files; it
// must see every process end that it has started, and every log must be
// well-formed.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>
#include <tuple>

#include "ChildProcesses.h"
#include "Jdk.h"
#include "LauncherLog.h"
#include "LauncherRun.h"
#include "ScopedTempDir.h"
#include "WaitUntil.h"

class EndToEndTest : public testing::Test {
protected:
    void TearDown() override
    {
        EXPECT_EQ(ChildProcesses::killAll(), "");
        EXPECT_EQ(log().malformed, "");
    }

    /// For runs that become another user, who may not get to where the build lies: from now on
    /// the launcher and the service are copies in the test's directory, which all may use.
    void openToAllUsers()
    {
        std::filesystem::permissions(dir.path(), std::filesystem::perms::all);
        for (std::string* const file : {&program, &serviceJar}) {
            const std::string copy = dir / std::filesystem::path(*file).filename();
            std::filesystem::copy(*file, copy);
            std::filesystem::permissions(copy, std::filesystem::perms{0755});
            *file = copy;
        }
    }

    [[nodiscard]] LauncherRun launcher(const std::string& args) const
    {
        return LauncherRun(dir.path(), args).program(program);
    }
    /// A start with `library`. The words of `script` are "method=step,step".
    [[nodiscard]] LauncherRun service(const std::string& script = "",
                                      const std::string& className = "service.Service") const
    {
        LauncherRun run = launcher("start --pidfile service.pid --clog launcher.log");
        if (library.ends_with("libjvm.so")) run.withJvm();
        run.arg("--jvmdll=" + library).arg("--jclasspath=" + serviceJar);
        run.arg("--jifaceclass=" + className).arg("--jvmopt=-XX:-UsePerfData");
        std::istringstream lines(script);
        for (std::string line; lines >> line;) run.arg("--jvmopt=-D" + line);
        return run;
    }

    /// The run fails with one line on standard error, which begins with
    /// `start`, logs that line and leaves no PID file.
    void expectFailure(LauncherRun run, int status, const std::string& start) const
    {
        const LauncherResult result = run.arg("--quiet").run();
        EXPECT_EQ(result.status, status) << start;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.substr(0, start.size()), start);
        const std::string message = result.err.substr(0, result.err.find('\n'));
        EXPECT_EQ(result.err, message + "\n");
        EXPECT_EQ(log().last(), "ERROR " + message + " exitCode=" + std::to_string(status));
        EXPECT_FALSE(exists("service.pid"));
    }

    [[nodiscard]] LauncherLog log() const { return LauncherLog(dir / "launcher.log"); }
    bool exists(const std::string& name) const { return std::filesystem::exists(dir / name); }
    std::string content(const std::string& name) const { return readText(dir / name); }
    /// Starts a service and waits until its script has come to "ready".
    [[nodiscard]] LauncherProcess startReady(const LauncherRun& run) const
    {
        std::filesystem::remove(dir / "ready");
        LauncherProcess launcher = run.start();
        EXPECT_TRUE(waitUntil([this] { return exists("ready"); }));
        return launcher;
    }
    /// The process id in the PID file; 0 without one.
    [[nodiscard]] pid_t savedPid() const { return std::stoi("0" + content("service.pid")); }
    static void expectEndAfter(int signal, const LauncherProcess& launcher, int status)
    {
        kill(launcher.pid, signal);
        EXPECT_EQ(launcher.waitForExit().status, status);
    }

    ScopedTempDir dir;
    std::string library;  // of the JVM
    std::string program = LAUNCHER_EXECUTABLE;
    std::string serviceJar = SERVICE_JAR;
};

/// A test that every installed JDK has to pass.
class JdkTest : public EndToEndTest, public testing::WithParamInterface<Jdk> {
protected:
    JdkTest() { library = GetParam().second; }
};
