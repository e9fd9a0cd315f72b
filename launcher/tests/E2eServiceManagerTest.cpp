#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>

#include "EndToEndTest.h"
#include "FileDescriptor.h"

namespace {

/// The service manager's end: collects the messages that come to `address`.
class Manager final {
public:
    explicit Manager(const std::string& address) : address_(address)
    {
        sockaddr_un socketAddress{};
        socketAddress.sun_family = AF_UNIX;
        address.copy(socketAddress.sun_path, sizeof socketAddress.sun_path);
        if (address.front() == '@') socketAddress.sun_path[0] = '\0';
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + address.size());
        if (bind(socket_.get(), reinterpret_cast<const sockaddr*>(&socketAddress), size) != 0) {
            throw std::runtime_error("cannot bind to " + address);
        }
    }

    [[nodiscard]] const std::string& address() const { return address_; }
    /// What has come since it was last asked, each message with a ';' behind.
    std::string messages()
    {
        std::string text(4096, '\0');
        ssize_t size = 0;
        while ((size = recv(socket_.get(), text.data(), text.size(), MSG_DONTWAIT)) >= 0) {
            received_ += text.substr(0, static_cast<std::size_t>(size)) + ";";
        }
        return received_;
    }

private:
    std::string address_;
    FileDescriptor socket_{socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    std::string received_;
};

class ServiceManagerE2eTest : public JdkTest {
protected:
    static std::string beginning(pid_t pid)
    {
        return "STATUS=Starting Java;MAINPID=" + std::to_string(pid) +
               "\nEXTEND_TIMEOUT_USEC=30000000;";
    }
    static std::string ready(pid_t pid)
    {
        return running + "READY=1\nMAINPID=" + std::to_string(pid) + ";";
    }
    static std::string stopping(const std::string& kind)
    {
        return "STATUS=Stopping (" + kind + ");STOPPING=1\nEXTEND_TIMEOUT_USEC=30000000;";
    }
    static inline const std::string running = "STATUS=Running service.Service;";
    const std::string waiting = "STATUS=Waiting for start to return;";
    const std::string ending = "STATUS=Ending the JVM;STATUS=Stopped;";
    const std::string waits = "start=ready,wait stop=release stopFast=release";
};
FOR_EACH_JDK(ServiceManagerE2eTest);

TEST_P(ServiceManagerE2eTest, IsToldWhatTheServiceIsAt)
{
    Manager manager("@" + dir.path().string());
    const LauncherProcess launcher = startReady(
        service("start=ready,until:go stop=sleep:0").env("NOTIFY_SOCKET", manager.address()));
    const std::string started = beginning(launcher.pid) + ready(launcher.pid);
    EXPECT_TRUE(waitUntil([&] { return manager.messages() == started; })) << manager.messages();
    kill(launcher.pid, SIGUSR1);
    const std::string stopped = started + stopping("simple") + waiting;
    EXPECT_TRUE(waitUntil([&] { return manager.messages() == stopped; })) << manager.messages();
    dir.write("go", "");
    EXPECT_EQ(launcher.waitForExit().status, 0);
    EXPECT_EQ(manager.messages(), stopped + ending);

    Manager detached(dir / "socket");
    EXPECT_EQ(startReady(service(waits).args("--daemon").env("NOTIFY_SOCKET", detached.address()))
                  .waitForExit()
                  .status,
              0);
    const pid_t daemon = savedPid();
    const std::string runs = beginning(daemon) + ready(daemon);
    EXPECT_TRUE(waitUntil([&] { return detached.messages() == runs; })) << detached.messages();
    kill(daemon, SIGUSR2);
    EXPECT_EQ(ChildProcesses::waitForExit(daemon), 200);
    EXPECT_TRUE(detached.messages().starts_with(runs + stopping("fast"))) << detached.messages();
    EXPECT_FALSE(log().holds("WARN "));
}

TEST_P(ServiceManagerE2eTest, DoesNotTakeAServiceForReadyThatIsNot)
{
    Manager manager(dir / "socket");
    const LauncherProcess failing =
        service("start=sleep:200,throw").env("NOTIFY_SOCKET", manager.address()).start();
    EXPECT_EQ(failing.waitForExit().status, 8);
    EXPECT_EQ(manager.messages(),
              beginning(failing.pid) + ending + "STATUS=Failed with exit code 8;");

    Manager exits(dir / "exits");
    const LauncherProcess exiting =
        service("start=sleep:220,exit:3").env("NOTIFY_SOCKET", exits.address()).start();
    EXPECT_EQ(exiting.waitForExit().status, 3);
    EXPECT_EQ(exits.messages(), beginning(exiting.pid));

    Manager tells(dir / "tells");
    const LauncherProcess telling = startReady(service("start=child,ready,wait stop=release")
                                                   .env("NOTIFY_SOCKET", tells.address())
                                                   .env("LAUNCHER_READY", "service"));
    EXPECT_NE(content("child").find("NOTIFY_SOCKET=" + tells.address()), std::string::npos);
    expectEndAfter(SIGUSR1, telling, 0);
    const std::string expected = beginning(telling.pid) + running + stopping("simple");
    EXPECT_TRUE(tells.messages().starts_with(expected)) << tells.messages();
}

TEST_P(ServiceManagerE2eTest, TakesAServiceForReadyThatHasEndedInOrder)
{
    Manager manager(dir / "socket");
    const LauncherProcess launcher = service("start=")
                                         .env("NOTIFY_SOCKET", manager.address())
                                         .env("LAUNCHER_READY", "yes")
                                         .start();
    EXPECT_EQ(launcher.waitForExit().status, 0);
    EXPECT_EQ(manager.messages(), beginning(launcher.pid) + ready(launcher.pid) + ending);
    EXPECT_TRUE(log().holds("WARN Unknown value of LAUNCHER_READY value=yes, expected=service"));
}

TEST_P(ServiceManagerE2eTest, HarmsNobodyWhereItCannotBeTold)
{
    const std::string warning = "WARN Cannot notify the service manager address=";
    const std::pair<std::string, std::string> cases[] = {
        {dir / "gone", "(2) No such file or directory"},
        {"@" + std::string(108, 'a'), "(36) File name too long"},
        {"/" + std::string(107, 'a'), "(36) File name too long"},
        {"vsock:2:1", "(22) Invalid argument"},
    };
    for (const auto& [address, error] : cases) {
        EXPECT_EQ(service("start=ready").env("NOTIFY_SOCKET", address).run().status, 0);
        EXPECT_EQ(log().count(warning + address + ", Error=" + error), 1) << address;
        EXPECT_EQ(log().count("WARN "), 1);
    }
}

}  // namespace
