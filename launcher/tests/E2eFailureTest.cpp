#include <unistd.h>

#include "EndToEndTest.h"

namespace {

using InterfaceClassE2eTest = JdkTest;
FOR_EACH_JDK(InterfaceClassE2eTest);  // the exceptions are the JVM's

TEST_P(InterfaceClassE2eTest, MustBeLoadable)
{
    expectFailure(service("", "p.Missing"), 7, "Cannot find Java class p/Missing\n");
    expectFailure(service("", "service.Service$NoInitialiser"), 7,
                  "Cannot load Java class service/Service$NoInitialiser.\n");
    EXPECT_TRUE(log().holds("INFO Cannot load class: java.lang.ExceptionInInitializerError"));

    dir.write("Malformed.class", "no class at all");
    expectFailure(service("java.class.path=.", "Malformed"), 7,
                  "Cannot load Java class Malformed. Incorrect class format.\n");
}

class StartFailureE2eTest : public EndToEndTest {
protected:
    StartFailureE2eTest()
    {
        library = "./fake.so";
        std::filesystem::create_symlink(FAKE_JVM, dir / "fake.so");
        std::filesystem::create_symlink(LIBRARY_WITHOUT_JVM, dir / "nojvm.so");
    }
    /// A start with a JVM that cannot be created.
    [[nodiscard]] LauncherRun startFake(int result) const
    {
        return service().env("FAKE_JVM_RESULT", std::to_string(result));
    }

    const std::string notCreated = "Cannot create JVM 8 instance with library './fake.so'. ";
};

TEST_F(StartFailureE2eTest, NamesWhatCannotBeUsed)
{
    const std::string elf("\177ELF\0\1\1\0\0\0\0\0\0\0\0\0\0", 17);
    dir.write("lib32.so", std::string(elf).replace(4, 1, "\1"));
    dir.write("broken.so", std::string(elf).replace(4, 1, "\2") + "not much of a library");
    const std::string text = dir.write("text.so", "16 bytes or more of text");
    const std::tuple<int, std::string, std::string> cases[] = {
        {2, "lib32.so --jclasspath fake.so", "'lib32.so' is not a 64-bit library\n"},
        {20, "text.so --jclasspath fake.so", "A library format is not ELF: 'text.so'\n"},
        {4, "./broken.so --jclasspath fake.so", "Cannot load JVM library from './broken.so'. "},
        {4, "./nojvm.so --jclasspath fake.so",
         "JVM library './nojvm.so' has no JNI_CreateJavaVM function\n"},
        {2, "fake.so --jclasspath ./*.jar:",
         "Classpath was set but no files meet the mask. Search path: ./*.jar:\n"},
        {20, "fake.so --jclasspath fake.so --workdir " + text,
         "Cannot change current directory to '" + text + "'. Error: (20) Not a directory\n"},
    };
    for (const auto& [status, options, message] : cases) {
        expectFailure(launcher("start --clog launcher.log --jvmdll " + options), status, message);
    }

    const std::string log = dir / std::string(255, 'l');
    const LauncherResult noLog = launcher("start --jvmdll fake.so --clog " + log).run();
    EXPECT_EQ(noLog.status, 10);
    EXPECT_EQ(noLog.err, "Cannot rotate launcher log: source '" + log + "', target '" + log +
                             ".1'. Error: (36) File name too long\n");
}

TEST_F(StartFailureE2eTest, NamesTheReasonWhyTheJvmWasNotCreated)
{
    const std::pair<int, std::string> cases[] = {
        {-1, "unknown error"},      {-2, "thread detached from the VM"}, {-4, "not enough memory"},
        {-5, "VM already created"}, {-6, "invalid arguments"},           {-7, "#bad code#"},
        {1, "#bad code#"},
    };
    for (const auto& [result, reason] : cases) {
        expectFailure(startFake(result), 4,
                      notCreated + "Error " + std::to_string(result) + ": " + reason + "\n");
    }
    expectFailure(startFake(-3), 6,
                  notCreated + "Java version is not sufficient for the application.\n");
}

TEST_F(StartFailureE2eTest, ADetachedLauncherCanBeFoundWhenTheCommandReturnsAndLogsItsFailure)
{
    const LauncherRun run = startFake(-4).args("--daemon").env("FAKE_JVM_UNTIL", "go");
    for (int round = 0; round < 10; ++round) {
        std::filesystem::remove(dir / "go");
        const LauncherProcess command = run.start();
        waitid(P_PID, static_cast<id_t>(command.pid), nullptr, WEXITED | WNOWAIT);  // not later
        const pid_t daemon = savedPid();
        ASSERT_NE(daemon, 0) << round;
        dir.write("go", "");
        EXPECT_EQ(command.waitForExit().status, 0);
        EXPECT_EQ(ChildProcesses::waitForExit(daemon), 4);
        EXPECT_EQ(log().tid, daemon);
    }
    EXPECT_TRUE(log().holds("ERROR Launcher has stopped."));
    EXPECT_EQ(log().last(), "ERROR " + notCreated + "Error -4: not enough memory exitCode=4");
    EXPECT_FALSE(exists("service.pid"));
}

TEST_F(StartFailureE2eTest, ComposesTheOptionsOfTheJvm)
{
    const std::string jars = std::filesystem::path(SERVICE_JAR).parent_path();
    LauncherRun run = launcher("start --jvmdll ./fake.so --jvmopt -Da=б --jvmopt=-Xmx64m");
    run.arg("--jmodulepath=" + jars).arg("--jclasspath=" + jars + "/*.jar:none.jar");
    run.env("JVM_OPTS", "--jvmopt -Dx=1 2 ").env("FAKE_JVM_RESULT", "-1");
    EXPECT_EQ(run.run().status, 4);
    EXPECT_EQ(content("options"), std::string("--module-path=") + SERVICE_JAR +
                                      "\n-Djava.class.path=" + SERVICE_JAR +
                                      "\n-Da=б\n-Xmx64m\n-Dx=1 2\nexit\nabort\n");
}

/// Launchers that meet at a bad moment.
using RaceE2eTest = StartFailureE2eTest;

TEST_F(RaceE2eTest, OfTwoStartsAtTheSameInstantExactlyOneRuns)
{
    const std::string leftovers[] = {"none", "", "999999999", "no number"};
    for (int round = 0; round < 100; ++round) {
        for (const char* name : {"go", "options"}) std::filesystem::remove(dir / name);
        const std::string& leftover = leftovers[static_cast<std::size_t>(round) % 4];
        if (leftover != "none") dir.write("service.pid", leftover);
        LauncherRun run = service().args("--quiet").env("FAKE_JVM_UNTIL", "go");
        run.before([] { raise(SIGSTOP); });
        const LauncherProcess starts[] = {run.start(), run.start()};
        for (const LauncherProcess& start : starts) {
            waitid(P_PID, static_cast<id_t>(start.pid), nullptr, WSTOPPED);
        }
        for (const LauncherProcess& start : starts) kill(start.pid, SIGCONT);

        ASSERT_TRUE(
            waitUntil([] { return ChildProcesses::reap(), !ChildProcesses::ended.empty(); }));
        const pid_t loser = ChildProcesses::ended.begin()->first;
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
