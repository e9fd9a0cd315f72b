// Launchers that meet at a bad moment.
#include <fcntl.h>
#include <unistd.h>

#include <array>

#include "EndToEndTest.h"

namespace {

class RaceE2eTest : public EndToEndTest {
protected:
    RaceE2eTest()
    {
        library = "./fake.so";
        std::filesystem::create_symlink(FAKE_JVM, dir / "fake.so");
    }
};

/// Holds back launchers until all are there.
class StartingGate final {
public:
    StartingGate() { EXPECT_EQ(pipe2(pipe_.data(), O_CLOEXEC), 0); }
    ~StartingGate() { close(pipe_[0]); }
    StartingGate(const StartingGate&) = delete;
    StartingGate& operator=(const StartingGate&) = delete;

    void open() { close(pipe_[1]); }
    /// For the new process of a launcher.
    void wait()
    {
        char nothing = 0;
        close(pipe_[1]);
        static_cast<void>(!read(pipe_[0], &nothing, 1));
    }

private:
    std::array<int, 2> pipe_{};
};

TEST_F(RaceE2eTest, OfTwoStartsAtTheSameInstantExactlyOneRuns)
{
    const std::string refused =
        "PID file exists and the process with PID referenced there is running\n";
    const std::string leftovers[] = {"none", "", "999999999", "no number"};
    for (int round = 0; round < 100; ++round) {
        std::filesystem::remove(dir / "go");
        const std::string& leftover = leftovers[static_cast<std::size_t>(round) % 4];
        if (leftover != "none") dir.write("service.pid", leftover);
        StartingGate gate;
        LauncherRun run = service().args("--quiet");
        run.env("FAKE_JVM_UNTIL", "go").before([&gate] { gate.wait(); });
        const std::array starts{run.start(), run.start()};
        gate.open();

        const pid_t loser = ChildProcesses::waitForAny();
        const auto& [first, second] = starts;
        const LauncherResult lost = (loser == first.pid ? first : second).waitForExit();
        const LauncherProcess& winner = loser == first.pid ? second : first;
        EXPECT_EQ(std::pair(lost.status, lost.err), std::pair(3, refused)) << round;
        EXPECT_TRUE(waitUntil([&] { return exists("options"); }));  // it has come to the JVM
        EXPECT_EQ(savedPid(), winner.pid) << round;
        dir.write("go", "");
        EXPECT_EQ(winner.waitForExit().status, 4);
        EXPECT_FALSE(exists("service.pid"));
        std::filesystem::remove(dir / "options");
    }
}

TEST_F(RaceE2eTest, APidFileThatNamesAnotherProcessByNowStays)
{
    const LauncherProcess launcher = service().env("FAKE_JVM_UNTIL", "go").start();
    EXPECT_TRUE(waitUntil([this] { return exists("options"); }));
    const std::string another = std::to_string(getpid());
    dir.write("service.pid", another);  // somebody has deleted the first one's meanwhile
    dir.write("go", "");
    EXPECT_EQ(launcher.waitForExit().status, 4);
    EXPECT_EQ(content("service.pid"), another);
}

}  // namespace
