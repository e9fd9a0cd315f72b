// Launchers that meet at a bad moment.
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

TEST_F(RaceE2eTest, OfTwoStartsAtTheSameInstantExactlyOneRuns)
{
    const std::string leftovers[] = {"none", "", "999999999", "no number"};
    for (int round = 0; round < 100; ++round) {
        for (const char* name : {"go", "options"}) std::filesystem::remove(dir / name);
        const std::string& leftover = leftovers[static_cast<std::size_t>(round) % 4];
        if (leftover != "none") dir.write("service.pid", leftover);
        LauncherRun run = service().args("--quiet").env("FAKE_JVM_UNTIL", "go");
        run.before([] { raise(SIGSTOP); });
        const std::array starts{run.start(), run.start()};
        for (const LauncherProcess& start : starts) {
            waitid(P_PID, static_cast<id_t>(start.pid), nullptr, WSTOPPED);
        }
        for (const LauncherProcess& start : starts) kill(start.pid, SIGCONT);

        const pid_t loser = ChildProcesses::waitForAny();
        const auto& [first, second] = starts;
        const LauncherProcess& winner = loser == first.pid ? second : first;
        ASSERT_EQ(ChildProcesses::waitForExit(loser), 3) << round;
        EXPECT_TRUE(waitUntil([&] { return exists("options"); }));  // it has come to the JVM
        EXPECT_EQ(savedPid(), winner.pid) << round;
        dir.write("go", "");
        EXPECT_EQ(winner.waitForExit().status, 4);
        EXPECT_FALSE(exists("service.pid"));
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
