#include <unistd.h>

#include "EndToEndTest.h"

namespace {

using CommandLineE2eTest = EndToEndTest;

TEST_F(CommandLineE2eTest, AnswersOnStandardOutputAndWritesNoLog)
{
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"C", "", "Usage:\n\n        launcher  help [options] [arguments]\n\n"},
        {"C", "help stop", "    --timeout=msecs\n        The number of milliseconds"},
        {"C", "-v", "Version 3.11.1+4\n"},
        {"ru_RU.UTF-8", "help start", "\n    start\n        Запуск Java-кода в выделенной JVM."},
    };
    for (const auto& [locale, args, part] : cases) {
        const LauncherResult result = launcher(args).env("LC_ALL", locale).run();
        EXPECT_EQ(result.status, 0) << part;
        EXPECT_NE(result.out.find(part), std::string::npos) << result.out;
        EXPECT_EQ(result.err, "");
    }
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST_F(CommandLineE2eTest, ReportsErrorsOnStandardOutput)
{
    dir.write("empty", "");
    dir.write("line", "12\n");
    const std::tuple<int, std::string, std::string> cases[] = {
        {1, "run", "Unknown mode 'run'"},
        {0, "stop", "None of CLI arguments --pid and --pidfile are set"},
        {0, "stop --pidfile empty", "Zero-sized PID file 'empty'"},
        {0, "stop --pidfile line", "Illegal characters in PID file 'line'"},
        {0, "stop --pidfile no", "Cannot read file 'no'. Error: (2) No such file or directory"},
        {0, "stop --pidfile .", "Cannot read file '.'. Error: (21) Is a directory"},
        {0, "start --jvmdll x", "Neither --jclasspath nor --jmodulepath is set."},
        {4, "start --javahome . --jclasspath x", "Cannot find JVM library"},
        {20, "start --jclasspath a --workdir /dev/null/x",
         "Cannot read file '/dev/null/x'. Error: (20) Not a directory"},
        {0, "stop --pid 1 --pidfile x",
         "Mutually exclusive CLI arguments --pid and --pidfile are set"},
        {0, "stop --pidfile /dev/null/x",
         "Cannot read file '/dev/null/x'. Error: (20) Not a directory"},
        {1, "start --quiet --quiet --no --clog launcher.log",
         "--quiet can not be duplicated, only one occurrence is allowed\n"
         "Unexpected CLI arguments: --no"},
    };
    for (const auto& [status, args, out] : cases) {
        const LauncherResult result = launcher(args).run();
        EXPECT_EQ(result.status, status) << out;
        EXPECT_EQ(result.out, out + "\n");
        EXPECT_EQ(result.err, "");
    }
    EXPECT_EQ(log().records, std::vector{"ERROR " + std::get<2>(std::end(cases)[-1])});
    EXPECT_EQ(launcher("run").env("LC_ALL", "ru_RU.UTF-8").run().out, "Неизвестный режим: 'run'\n");
}

TEST_F(CommandLineE2eTest, StopTellsWhyItStoppedNobody)
{
    if (geteuid() != 0 && kill(1, 0) == 0) GTEST_SKIP() << "every process is of this user";
    openToAllUsers();
    const auto becomeNobody = [] { std::ignore = setuid(65534); };  // may be one already
    const std::tuple<std::string, int, std::string> cases[] = {
        {"999999999", 11, "Launcher with PID=999999999 not found, nothing was stopped\n"},
        {"1", 12, "Launcher is not permitted to stop process with PID=1\n"},
    };
    for (const auto& [pid, status, err] : cases) {
        const LauncherResult result = launcher("stop --pid " + pid).before(becomeNobody).run();
        EXPECT_EQ(result.status, status) << err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, err);
    }
}

}  // namespace
