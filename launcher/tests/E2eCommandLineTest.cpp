#include "EndToEndTest.h"

namespace {

using CommandLineE2eTest = EndToEndTest;

TEST_F(CommandLineE2eTest, AnswersOnStandardOutputAndWritesNoLog)
{
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"C", "", "Usage:\n\n        launcher  help [options] [arguments]\n\n"},
        {"C", "help -h stop",
         "\n\nMode:\n\n    help\n        Show usage information for a given mode.\n\n"
         "Parameters:\n\n    start\n"},
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
    const std::tuple<int, std::string, std::string> cases[] = {
        {0, "stop", "None of CLI arguments --pid and --pidfile are set"},
        {0, "stop --pid 1 --pidfile x",
         "Mutually exclusive CLI arguments --pid and --pidfile are set"},
        {0, "stop --pidfile empty", "Zero-sized PID file 'empty'"},
        {0, "stop --pidfile no", "Cannot read file 'no'. Error: (2) No such file or directory"},
        {0, "start --jvmdll x", "Neither --jclasspath nor --jmodulepath is set."},
        {4, "start --javahome . --jclasspath x", "Cannot find JVM library"},
        {20, "start --jclasspath a --workdir /dev/null/x",
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

}  // namespace
