#include "Log.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <thread>

#include "LauncherLog.h"
#include "LinuxFileLogger.h"
#include "UnitTest.h"

namespace {

TEST(LogValueTest, NamedValuesAreQuotedWhereTheyWouldBreakTheLayout)
{
    const RecordingLogger log;
    logWarn({L"C", L"f"}, L"Full", L"n", -5, L"b", true, L"l", Texts{L"a", L"b c"}, L"k=1",
            L"it's");
    EXPECT_EQ(log.lines(), Texts{L"WARN C.f: Full n=-5, b=true, l=a;b c, 'k=1'=\"it's\""});
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"C:\\a b", L"C:\\a b"}, {L"a,b", L"'a,b'"},       {L"a\nb\r", L"'a\nb\r'"},
        {L"'\"", L"'''\"'"},      {L"''\"", L"\"''\"\"\""},
    };
    for (const auto& [value, expected] : cases) {
        logInfo({L"C", L"f"}, L"m", L"k", value);
        EXPECT_EQ(log.lines().back(), L"INFO C.f: m k=" + expected);
    }
}

class LogTest : public testing::Test {
protected:
    static void write(LinuxFileLogger& logger, const std::wstring& message)
    {
        logger.log(kLevelInfo, L"C", L"f.cpp", 1, L"f", message);
        logger.flush();
    }

    ScopedCatalogue catalogue_;
    ScopedTempDir dir_;
    const std::wstring file_ = dir_.wide("app.log");
};

TEST_F(LogTest, IsOpenedOnceAndHoldsOnlyTheRecordsOfItsLife)
{
    logInfo({L"C", L"f"}, L"too early");
    initLogger(dir_.wide("sub/dir/app.log"));
    logError({L"Class", L"run"}, L"Сообщение 😀", L"pid", 7);
    const std::string line = std::to_string(__LINE__ - 1);
    releaseLogger();
    logInfo({L"C", L"f"}, L"too late");
    releaseLogger();
    EXPECT_EQ(raised([&] { initLogger(file_); }), L"21 Logger was already initialized");
    const LauncherLog log(dir_ / "sub/dir/app.log");
    EXPECT_EQ(log.records, std::vector<std::string>{"ERROR Сообщение 😀 pid=7"});
    EXPECT_EQ(log.tid, gettid());
    const std::string text = readText(dir_ / "sub/dir/app.log"), pid = std::to_string(getpid());
    EXPECT_NE(text.find(",pid=" + pid + ","), text.npos) << text;
    EXPECT_NE(text.find(",class=Class,file=LogTest.cpp,line=" + line + ",func=run,"), text.npos);
}

TEST_F(LogTest, SurvivesAReleasedLogThatOtherThreadsStillWriteTo)
{
    initLogger(file_);
    {
        const auto write = [](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                logInfo({L"C", L"f"}, L"record", L"key", L"value");
                getLogger().flush();
            }
        };
        const std::jthread one(write), other(write);  // stopped and joined at the end
        while (std::filesystem::file_size(dir_ / "app.log") < 100'000) std::this_thread::yield();
        releaseLogger();
    }
    const LauncherLog log(dir_ / "app.log");
    EXPECT_EQ(log.malformed, "");
    EXPECT_EQ(log.count("INFO record key=value"), std::ssize(log.records));
}

TEST_F(LogTest, DoesNotWaitForALogThatACrashedThreadHolds)
{
    ASSERT_EQ(mkfifo((dir_ / "app.log").c_str(), 0600), 0);
    std::fstream pipe(dir_ / "app.log");  // for both directions: opens without waiting
    LinuxFileLogger logger(file_, 1);
    std::thread holder([&logger] { write(logger, std::wstring(1'000'000, L'x')); });
    pipe.peek();  // it blocks in the middle of its write, the log in its hands
    limitLogWaits(std::chrono::milliseconds(1));
    write(logger, L"lost");
    logger.close();
    std::string text;
    std::getline(pipe, text);
    holder.join();
    EXPECT_EQ(text.size() - text.rfind('='), 1'000'001u);
}

TEST_F(LogTest, BeginsALineOfItsOwnAfterOneThatWasCut)
{
    LinuxFileLogger logger(file_, 1);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{300, RLIM_INFINITY}, none{RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &full);
    for (int i = 0; i < 5; ++i) write(logger, L"before");
    setrlimit(RLIMIT_FSIZE, &none);
    write(logger, L"after");
    EXPECT_EQ(LauncherLog(dir_ / "app.log").last(), "INFO after");
}

TEST_F(LogTest, RotatesAnOlderLogToTheNextFreeNumber)
{
    // What is there before, and where the old log goes.
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"app.log", "app.log.1", "app.log.7"}, "app.log.8"},
        {{"app.log", "app.log-5", "app.log.5a", "app.log.x", "app.lo.9"}, "app.log.6"},
        {{"app.log", "app.log.9223372036854775806"}, "app.log.9223372036854775807"},
    };
    for (const auto& [before, rotatedTo] : cases) {
        const ScopedTempDir dir;
        for (const std::string& name : before) dir.write(name, "old " + name);
        LinuxFileLogger(dir.wide("app.log"), 1).flush();
        EXPECT_EQ(readText(dir / rotatedTo), "old app.log");
        for (const std::string& name : before) {
            EXPECT_EQ(readText(dir / name), name == "app.log" ? "" : "old " + name);
        }
    }
}

TEST_F(LogTest, LeavesANewLogToTheUserOfTheOneBeforeUnlessAnybodyMayHavePlantedThat)
{
    constexpr uid_t kUser = 65534, kGroup = 65533;
    const std::tuple<uid_t, mode_t, bool> directories[] = {
        {kUser, 0755, true}, {0, 0755, true}, {0, 0775, false}, {0, 0757, false}, {1, 0755, false},
    };
    const mode_t before = umask(077);
    for (const auto& [owner, mode, isLeft] : directories) {
        const ScopedTempDir dir;
        const std::string file = dir.write("app.log", "");
        if (chown(file.c_str(), kUser, kGroup) != 0) GTEST_SKIP() << "needs the rights of root";
        chmod(file.c_str(), 0664);
        ASSERT_EQ(chown(dir.path().c_str(), owner, 0), 0);
        chmod(dir.path().c_str(), mode);
        LinuxFileLogger(dir.wide("app.log"), 1).flush();
        struct stat status {};
        ASSERT_EQ(stat(file.c_str(), &status), 0);
        const auto ownership = std::tuple(status.st_uid, status.st_gid, status.st_mode & 0777U);
        EXPECT_EQ(ownership, isLeft ? std::tuple(kUser, kGroup, 0640U) : std::tuple(0U, 0U, 0600U))
            << owner << " " << mode;
    }
    umask(before);
}

TEST_F(LogTest, ReportsALogThatCannotBeMade)
{
    EXPECT_EQ(raised([&] { LinuxFileLogger(dir_.wide(), 1); }),
              L"10 Cannot create file '" + dir_.wide() + L"'. Error: (21) Is a directory");
    dir_.write("app.log.", "");  // counts as the log, which then cannot be renamed
    dir_.write("x/y", "");       // a backslash separates it, too, but no system call knows that
    for (const std::wstring& path : {file_, dir_.wide("x\\y")}) {
        EXPECT_EQ(raised([&] { LinuxFileLogger(path, 1); }),
                  L"10 Cannot rotate launcher log: source '" + path + L"', target '" + path +
                      L".1'. Error: (2) No such file or directory");
    }
}

}  // namespace
