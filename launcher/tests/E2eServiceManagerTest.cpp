#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>

#include "EndToEndTest.h"
#include "FileDescriptor.h"

namespace {

/// The service manager's end: collects the messages that come to `address`.
class Manager final {
public:
    explicit Manager(std::string path) : address(std::move(path))
    {
        sockaddr_un name{AF_UNIX, {}};
        address.copy(name.sun_path, sizeof name.sun_path);
        if (address.front() == '@') name.sun_path[0] = '\0';
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + address.size());
        EXPECT_EQ(bind(socket_.get(), reinterpret_cast<const sockaddr*>(&name), size), 0);
    }

    /// What has come so far, each message with a ';' behind.
    const std::string& messages()
    {
        std::string text(4096, '\0');
        ssize_t size = 0;
        while ((size = recv(socket_.get(), text.data(), text.size(), MSG_DONTWAIT)) >= 0) {
            received_ += text.substr(0, static_cast<std::size_t>(size)) + ";";
        }
        return received_;
    }
    void expectMessages(const std::string& expected)
    {
        EXPECT_TRUE(waitUntil([&] { return messages() == expected; })) << received_;
    }

    const std::string address;

private:
    FileDescriptor socket_{socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    std::string received_;
};

class ServiceManagerE2eTest : public JdkTest {
protected:
    static std::string beginning(pid_t pid)
    {
        return "STATUS=Starting Java;" + mainPid(pid) + "\nEXTEND_TIMEOUT_USEC=30000000;";
    }
    static std::string mainPid(pid_t pid) { return "MAINPID=" + std::to_string(pid); }

    const std::string running = "STATUS=Running service.Service;";
    const std::string stopping = ";STOPPING=1\nEXTEND_TIMEOUT_USEC=30000000;";
    const std::string ending = "STATUS=Ending the JVM;STATUS=Stopped;";
};
FOR_EACH_JDK(ServiceManagerE2eTest);

TEST_P(ServiceManagerE2eTest, IsToldWhatTheServiceIsAt)
{
    Manager manager("@" + dir.path().string());
    LauncherRun run = service("start=ready,until:go stop=sleep:0");
    const LauncherProcess launcher = startReady(run.env("NOTIFY_SOCKET", manager.address));
    const std::string started =
        beginning(launcher.pid) + running + "READY=1\n" + mainPid(launcher.pid) + ";";
    manager.expectMessages(started);
    kill(launcher.pid, SIGUSR1);
    const std::string stopped =
        started + "STATUS=Stopping (simple)" + stopping + "STATUS=Waiting for start to return;";
    manager.expectMessages(stopped);
    dir.write("go", "");
    EXPECT_EQ(launcher.waitForExit().status, 0);
    manager.expectMessages(stopped + ending);
    EXPECT_FALSE(log().holds("WARN "));
}

TEST_P(ServiceManagerE2eTest, LeavesItToADetachedServiceToSayThatItIsReady)
{
    Manager manager(dir / "socket");
    LauncherRun run = service("start=child,ready,wait stopFast=release").args("--daemon");
    run.env("NOTIFY_SOCKET", manager.address).env("LAUNCHER_READY", "service");
    EXPECT_EQ(startReady(run).waitForExit().status, 0);
    EXPECT_NE(content("child").find("NOTIFY_SOCKET=" + manager.address), std::string::npos);
    const pid_t daemon = savedPid();
    kill(daemon, SIGUSR2);
    EXPECT_EQ(ChildProcesses::waitForExit(daemon), 200);
    const std::string expected = beginning(daemon) + running + "STATUS=Stopping (fast)" + stopping;
    EXPECT_TRUE(manager.messages().starts_with(expected)) << manager.messages();
}

TEST_P(ServiceManagerE2eTest, TakesNoServiceForReadyThatFailsAndOneThatEndsInOrder)
{
    const std::tuple<std::string, int, bool, std::string> cases[] = {
        {"start=sleep:200,throw", 8, false, ending + "STATUS=Failed with exit code 8;"},
        {"start=sleep:220,exit:3", 3, false, ""},
        {"start=", 0, true, ending},
    };
    for (const auto& [script, status, isReady, end] : cases) {
        Manager manager("@" + dir.path().string());
        LauncherRun run = service(script).env("NOTIFY_SOCKET", manager.address);
        const LauncherProcess launcher = run.env("LAUNCHER_READY", "yes").start();
        EXPECT_EQ(launcher.waitForExit().status, status);
        const std::string middle =
            isReady ? running + "READY=1\n" + mainPid(launcher.pid) + ";" : "";
        manager.expectMessages(beginning(launcher.pid) + middle + end);
        EXPECT_TRUE(
            log().holds("WARN Unknown value of LAUNCHER_READY value=yes, expected=service"));
    }
}

TEST_P(ServiceManagerE2eTest, HarmsNobodyWhereItCannotBeTold)
{
    const std::pair<std::string, std::string> cases[] = {
        {dir / "gone", "(2) No such file or directory"},
        {"@" + std::string(108, 'a'), "(36) File name too long"},
        {"/" + std::string(107, 'a'), "(36) File name too long"},
        {"vsock:2:1", "(22) Invalid argument"},
    };
    for (const auto& [address, error] : cases) {
        EXPECT_EQ(service("start=ready").env("NOTIFY_SOCKET", address).run().status, 0);
        EXPECT_TRUE(log().holds("WARN Cannot notify the service manager address=" + address +
                                ", Error=" + error));
        EXPECT_EQ(log().count("WARN "), 1);
    }
}

}  // namespace
