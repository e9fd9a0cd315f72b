#include "Log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <regex>
#include <thread>

#include "LinuxFileLogger.h"
#include "ScopedFileSizeLimit.h"
#include "UnitTest.h"

namespace {

TEST(LogValueTest, NamedValuesAreQuotedWhereTheyWouldBreakTheLayout)
{
    const RecordingLogger log;
    logWarn({L"C", L"f"}, L"Full", L"n", -5, L"b", true, L"l", Texts{L"a", L"b c"}, L"k=1",
            L"it's");
    EXPECT_EQ(log.lines(), Texts{L"WARN C.f: Full n=-5, b=true, l=a;b c, 'k=1'=\"it's\""});
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"C:\\a b", L"C:\\a b"}, {L"a,b", L"'a,b'"},  {L"a\nb\r", L"'a\nb\r'"},
        {L"\"x\"", L"'\"x\"'"},   {L"'\"", L"'''\"'"}, {L"''\"", L"\"''\"\"\""},
    };
    for (const auto& [value, expected] : cases) {
        logInfo({L"C", L"f"}, L"m", L"k", value);
        EXPECT_EQ(log.lines().back(), L"INFO C.f: m k=" + expected);
    }
}

class LogTest : public testing::Test {
protected:
    ScopedCatalogue catalogue_;
    ScopedTempDir dir_;
    const std::wstring file_ = dir_.wide("app.log");
};

TEST_F(LogTest, IsOpenedOnceAndHoldsOnlyTheRecordsOfItsLife)
{
    logInfo({L"C", L"f"}, L"too early");
    initLogger(dir_.wide("sub/dir/app.log"));
    logError({L"Клас", L"run"}, L"Сообщение 😀", L"pid", 7);
    const std::string line = std::to_string(__LINE__ - 1);
    releaseLogger();
    logInfo({L"C", L"f"}, L"too late");
    releaseLogger();
    EXPECT_EQ(raised([&] { initLogger(file_); }), L"21 Logger was already initialized");
    EXPECT_FALSE(std::filesystem::exists(dir_ / "app.log"));
    const std::regex layout(R"(\d{4}/\d\d/\d\d-\d\d:\d\d:\d\d\.\d{3},SYSTEM,0,level=ERROR,pid=)" +
                            std::to_string(getpid()) + ",tid=" + std::to_string(gettid()) +
                            ",component=launcher,class=Клас,file=LogTest.cpp,line=" + line +
                            ",func=run,message=Сообщение 😀 pid=7\n");
    const std::string text = readText(dir_ / "sub/dir/app.log");
    EXPECT_TRUE(std::regex_match(text, layout)) << text;
}

TEST_F(LogTest, SurvivesAReleasedLogThatOtherThreadsStillWriteTo)
{
    initLogger(file_);
    {
        std::vector<std::jthread> writers(4);  // stopped and joined at the end
        for (std::jthread& writer : writers) {
            writer = std::jthread([](const std::stop_token& stop) {
                for (int n = 0; n < 20'000 && !stop.stop_requested(); ++n) {
                    logInfo({L"C", L"f"}, L"record", L"key", L"value");
                    getLogger().flush();
                }
            });
        }
        while (std::filesystem::file_size(dir_ / "app.log") == 0) std::this_thread::yield();
        releaseLogger();
    }
    std::istringstream lines(readText(dir_ / "app.log"));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_EQ(std::count(line.begin(), line.end(), ','), 11) << line;
        EXPECT_TRUE(line.ends_with(",func=f,message=record key=value")) << line;
    }
}

TEST_F(LogTest, DoesNotWaitForALogThatACrashedThreadHolds)
{
    ASSERT_EQ(mkfifo((dir_ / "app.log").c_str(), 0600), 0);
    const int pipe = open((dir_ / "app.log").c_str(), O_RDONLY | O_NONBLOCK);
    fcntl(pipe, F_SETFL, 0);
    LinuxFileLogger logger(file_, 1);  // which leaves a pipe where it is
    // Blocks in the middle of its write, the log in its hands.
    std::thread holder([&logger] {
        logger.log(kLevelInfo, L"C", L"f.cpp", 1, L"f", std::wstring(1'000'000, L'x'));
        logger.flush();
    });
    std::string text(1, ' ');
    ASSERT_EQ(read(pipe, text.data(), 1), 1);
    limitLogWaits(std::chrono::milliseconds(1));
    logger.log(kLevelInfo, L"C", L"f.cpp", 1, L"f", L"lost");
    logger.flush();
    logger.close();

    for (char buffer[65536]; text.back() != '\n';) {
        const ssize_t count = read(pipe, buffer, sizeof buffer);
        ASSERT_GT(count, 0);
        text.append(buffer, static_cast<std::size_t>(count));
    }
    holder.join();
    close(pipe);
    EXPECT_EQ(text.find("lost"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(dir_ / "app.log.1"));
}

TEST_F(LogTest, BeginsALineOfItsOwnAfterOneThatWasCut)
{
    LinuxFileLogger log(file_, 1);
    const auto write = [&](const std::wstring& message) {
        log.log(kLevelInfo, L"C", L"f", 1, L"f", message);
        log.flush();
    };
    {
        const ScopedFileSizeLimit full(300);
        for (int i = 0; i < 5; ++i) write(L"before");
    }
    write(L"after");
    const std::string text = readText(dir_ / "app.log");
    EXPECT_NE(text.find("=after\n"), std::string::npos) << text;
    EXPECT_EQ(text.rfind(",SYSTEM,") - text.rfind('\n', text.size() - 2), 1 + 23) << text;
}

TEST_F(LogTest, NamesTheThreadOfAForkedChild)
{
    LinuxFileLogger log(file_, 1);
    const auto write = [&] { log.log(kLevelInfo, L"C", L"f", 1, L"f", L"here"); };
    write();
    log.flush();
    const pid_t child = fork();
    if (child == 0) {
        write();
        log.flush();
        _exit(0);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    const std::string text = readText(dir_ / "app.log");
    for (const pid_t thread : {gettid(), child}) {
        EXPECT_NE(text.find(",tid=" + std::to_string(thread) + ","), text.npos) << text;
    }
}

TEST_F(LogTest, RotatesAnOlderLogToTheNextFreeNumber)
{
    // What is there before, and where the old log goes.
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"app.log"}, "app.log.1"},
        {{"app.log", "app.log.1", "app.log.7"}, "app.log.8"},
        {{"app.log.3"}, "none"},
        {{"app.log", "app.log-5", "app.log.5a", "app.log.x", "app.lo.9"}, "app.log.6"},
        {{"app.log", "app.log.99999999999999999999"}, "app.log.1"},
        {{"app.log", "app.log.9223372036854775806"}, "app.log.9223372036854775807"},
        {{"app.log", "app.log."}, "app.log.1"},
    };
    for (const auto& [before, rotatedTo] : cases) {
        const ScopedTempDir dir;
        for (const std::string& name : before) dir.write(name, "old " + name);
        LinuxFileLogger(dir.wide("app.log"), 1).flush();
        EXPECT_EQ(readText(dir / rotatedTo), rotatedTo == "none" ? "" : "old app.log");
        for (const std::string& name : before) {
            EXPECT_EQ(readText(dir / name), name == "app.log" ? "" : "old " + name);
        }
    }
}

TEST_F(LogTest, LeavesANewLogToTheUserOfTheOneBeforeUnlessAnybodyMayHavePlantedThat)
{
    constexpr uid_t kUser = 65534, kGroup = 65533;
    const std::tuple<uid_t, mode_t, bool> directories[] = {{kUser, 0755, true},
                                                           {0, 0755, true},
                                                           {0, 0775, false},
                                                           {0, 01777, false},
                                                           {1, 0755, false}};
    for (const auto& [owner, mode, isLeft] : directories) {
        const ScopedTempDir dir;
        const std::string file = dir.write("app.log", "");
        if (chown(file.c_str(), kUser, kGroup) != 0) GTEST_SKIP() << "needs the rights of root";
        chmod(file.c_str(), 0664);
        ASSERT_EQ(chown(dir.path().c_str(), owner, 0), 0);
        chmod(dir.path().c_str(), mode);
        const mode_t before = umask(077);
        LinuxFileLogger(dir.wide("app.log"), 1).flush();
        umask(before);
        struct stat status {};
        ASSERT_EQ(stat(file.c_str(), &status), 0);
        const auto ownership = std::tuple(status.st_uid, status.st_gid, status.st_mode & 0777U);
        EXPECT_EQ(ownership, isLeft ? std::tuple(kUser, kGroup, 0640U) : std::tuple(0U, 0U, 0600U))
            << owner << " " << mode;
    }
}

TEST_F(LogTest, ReportsALogThatCannotBeMade)
{
    const std::wstring absent = dir_.wide("absent/app.log");
    EXPECT_EQ(raised([&] { LinuxFileLogger(absent, 1); }),
              L"10 Cannot create file '" + absent + L"'. Error: (2) No such file or directory");
    EXPECT_EQ(raised([&] { LinuxFileLogger(dir_.wide(), 1); }),
              L"10 Cannot create file '" + dir_.wide() + L"'. Error: (21) Is a directory");
    // A backslash separates the directory, too, but no system call knows that.
    dir_.write("x/y", "");
    EXPECT_EQ(raised([&] { LinuxFileLogger(dir_.wide("x\\y"), 1); }),
              L"10 Cannot rotate launcher log: source '" + dir_.wide("x\\y") + L"', target '" +
                  dir_.wide("x\\y.1") + L"'. Error: (2) No such file or directory");
    const std::wstring last = dir_.wide("last.log"), lastNumber = L".9223372036854775807";
    dir_.write("last.log", "");
    dir_.write("last.log" + toUtf8(lastNumber), "kept");
    EXPECT_EQ(raised([&] { LinuxFileLogger(last, 1); }),
              L"10 Cannot rotate launcher log: source '" + last + L"', target '" + last +
                  lastNumber + L"'. Error: (17) File exists");
    // A bare "app.log." counts as the log, which then cannot be renamed.
    dir_.write("app.log.", "");
    EXPECT_EQ(raised([&] { LinuxFileLogger(file_, 1); }),
              L"10 Cannot rotate launcher log: source '" + file_ + L"', target '" + file_ +
                  L".1'. Error: (2) No such file or directory");
}

}  // namespace
