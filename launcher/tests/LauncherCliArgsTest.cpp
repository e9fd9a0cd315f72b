#include "LauncherCliArgs.h"

#include "IConsole.h"
#include "UnitTest.h"

namespace {

using Mode = LauncherCliArgs::Mode;

class LauncherCliArgsTest : public UnitTest {
protected:
    /// The arguments of words; '@' stands for the directory.
    [[nodiscard]] std::unique_ptr<LauncherCliArgs> create(const std::wstring& words) const
    {
        return LauncherCliArgs::create(split(L"launcher " + at(words)));
    }
};

TEST_F(LauncherCliArgsTest, KeepsEveryValueAndLogsIt)
{
    for (const wchar_t* words :
         {L"start --instance=@ --daemon --quiet --procname=p --workdir=w --pidfile=f "
          L"--servicename=s --javahome=j --jvmdll=d --jvmopt=-Da=b --jvmopt -c --jclasspath=cp "
          L"--jmodulepath=mp --jifaceclass=a.B --jifacearg --x --jifacearg= --cstd=@/new/all "
          L"--clog=@/./log",
          L"start", L"stop --pidfile f --pid=2147483647 --fast --timeout=18446744073709551615",
          L"no"}) {
        create(words)->logState();
    }
    const std::wstring prefix = L"INFO LauncherCliArgs.logState: Mode is ";
    const std::wstring expected[] = {
        (L"Start. Environment: --quiet=true, --cerr=@/new/all, --cout=@/new/all, --daemon=true, "
         L"--servicename=s, --clog=@/log, --pidfile=f, --workdir=w, --procname=p, --instance=@"),
        (L"Start. JVM: --javahome=j, --jvmdll=d, --jclasspath=cp, --jmodulepath=mp, "
         L"--jifaceclass=a.B"),
        L"Start. JVM options: options='-Dinstance.root=@;-Da=b;-c'",
        L"Start. main class args: args=--x;",
        L"Start. JVM options: options=empty",
        (L"Stop. Environment: --pidfile=f, --pid=2147483647, --timeout=18446744073709551615, "
         L"--fast=true, "
         L"--cout=, --cerr="),
        L"Error. Errors=\"Unknown mode 'no'\"",
    };
    for (const std::wstring& record : expected) EXPECT_TRUE(log_.holds(prefix + at(record)));
}

TEST_F(LauncherCliArgsTest, RecordsWhatCannotBeUsed)
{
    dir_.write("file", "");
    const std::wstring twice = L" can not be duplicated, only one occurrence is allowed";
    const std::wstring read = L" Error: Cannot read file '";
    const std::wstring denied =
        L"' destination '@/' is not accessible." + read + L"@/'. Error: (21) Is a directory";
    const struct {
        std::wstring words, errors;
        bool redirection = true, log = true;
    } cases[] = {
        {L"-h --help", L"--help | -? | -h" + twice},
        {L"start -x --quiet --pi=1 --jvmopt= --pidfile",
         L"Unexpected CLI arguments: -x\nUnexpected CLI arguments: --pi=1\n"
         L"Option --pidfile value is not set"},
        {L"stop --pid=1 --pid 2", L"--pid" + twice},
        {L"stop --pid --fast", L"Invalid PID syntax: '--fast'"},
        {L"stop --pid=0", L"Invalid PID: '0'"},
        {L"stop --pid=2147483648", L"Invalid PID syntax: '2147483648'"},
        {L"stop --timeout=-1", L"Invalid timeout '-1'"},
        {L"stop --timeout=1s", L"Invalid timeout '1s'"},
        {L"start --instance=@/file/x", L"Cannot set instance root: '@/file/x'." + read +
                                           L"@/file/x'. Error: (20) Not a directory"},
        {L"start --cstd=@/ --instance=@/file",
         L"'--cout" + denied + L"\n'--cerr" + denied +
             L"\nCannot set instance root, because '@/file' is a file.",
         false},
        {L"start --clog=@/", L"'--clog" + denied, true, false},
        {L"start --cerr=e --cstd=c --cout=o", L"--cout is conflicting with --cstd", false},
        {L"start --cerr=e --cstd=c", L"--cerr is conflicting with --cstd", false},
    };
    for (const auto& c : cases) {
        const auto args = create(c.words);
        EXPECT_EQ(args->getMode(), Mode::Error);
        EXPECT_EQ(args->getErrors(), at(c.errors));
        EXPECT_EQ(args->isRedirectionUsable(), c.redirection) << c.errors;
        EXPECT_EQ(args->isLogDestinationUsable(), c.log) << c.errors;
    }
}

TEST_F(LauncherCliArgsTest, ErrorsReachTheLogAndTheRealOutput)
{
    const std::pair<std::wstring, bool> cases[] = {
        {L"start --clog=@/log --instance=/no", true},
        {L"start --clog=@/./log --cerr=@/log", false},
        {L"start --clog=@/log --cstd=@/o", false},
        {L"start --clog=@/log --what", false},
    };
    for (const auto& [words, redirected] : cases) {
        std::filesystem::remove(dir_ / "o");
        const auto args = create(words + L" --cout=@/o");
        testing::internal::CaptureStdout();
        LauncherCliArgs::openConsole(*args, args->getClog())->writeLine(L"text");
        EXPECT_EQ(args->getMode(), Mode::Error);
        EXPECT_EQ(args->getClog(), at(L"@/log"));
        EXPECT_EQ(testing::internal::GetCapturedStdout(), redirected ? "" : "text\n");
        EXPECT_EQ(readText(dir_ / "o"), redirected ? "text\n" : "");
    }
    EXPECT_EQ(create(L"start --what --clog=@/log/x")->getClog(), L"");  // below a file
}

}  // namespace
