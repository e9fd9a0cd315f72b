#include "LauncherCliArgs.h"

#include "IConsole.h"
#include "UnitTest.h"

namespace {

using Mode = LauncherCliArgs::Mode;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

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
    create(
        L"start --instance=@ --daemon --quiet --procname=p --workdir=w --pidfile=f "
        L"--servicename=s --javahome=j --jvmdll=d --jvmopt=-Da=b --jvmopt -c --jclasspath=cp "
        L"--jmodulepath=mp --jifaceclass=a.B --jifacearg --x --jifacearg= --cstd=@/new/all "
        L"--clog=@/./log")
        ->logState();
    create(L"start")->logState();
    create(L"stop --pidfile f --pid=3 --fast")->logState();
    create(L"no")->logState();
    const std::wstring prefix = L"INFO LauncherCliArgs.logState: Mode is ";
    const std::wstring expected[] = {
        (L"Start. Environment: --quiet=true, --cerr=@/new/all, --cout=@/new/all, --daemon=true, "
         L"--servicename=s, --clog=@/log, --pidfile=f, --workdir=w, --procname=p, --instance=@"),
        (L"Start. JVM: --javahome=j, --jvmdll=d, --jclasspath=cp, --jmodulepath=mp, "
         L"--jifaceclass=a.B"),
        L"Start. JVM options: options='-Dinstance.root=@;-Da=b;-c'",
        L"Start. main class args: args=--x;",
        L"Start. JVM options: options=empty",
        L"Stop. Environment: --pidfile=f, --pid=3, --timeout=empty, --fast=true, --cout=, --cerr=",
        L"Error. Errors=\"Unknown mode 'no'\"",
    };
    for (const std::wstring& record : expected) EXPECT_TRUE(log_.holds(prefix + at(record)));
}

TEST_F(LauncherCliArgsTest, TakesWholeDecimalNumbersOnly)
{
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"--pid=2147483647", L""},
        {L"--pid=0", L"Invalid PID: '0'"},
        {L"--pid=-5", L"Invalid PID: '-5'"},
        {L"--pid=2147483648", L"Invalid PID syntax: '2147483648'"},
        {L"--timeout=0", L""},
        {L"--timeout=18446744073709551615", L""},
        {L"--timeout=18446744073709551616", L"Invalid timeout '18446744073709551616'"},
        {L"--timeout=-1", L"Invalid timeout '-1'"},
        {L"--timeout=1s", L"Invalid timeout '1s'"},
    };
    for (const auto& [word, error] : cases) {
        const auto args = create(L"stop " + word);
        EXPECT_EQ(args->getErrors(), error);
        EXPECT_EQ(args->getMode(), error.empty() ? Mode::Stop : Mode::Error) << word;
        args->logState();
        EXPECT_EQ(log_.lines().back().find(word + L",") != std::wstring::npos, error.empty());
    }
}

TEST_F(LauncherCliArgsTest, RecordsProblemsOfPathsAndGoesOn)
{
    dir_.write("file", "");
    const std::wstring read = L" Error: Cannot read file '";
    const std::wstring denied =
        L"' destination '@/' is not accessible." + read + L"@/'. Error: (21) Is a directory";
    const struct {
        std::wstring words, errors;
        bool redirection = true, log = true;
    } cases[] = {
        {L"--instance=@/file/x", L"Cannot set instance root: '@/file/x'." + read +
                                     L"@/file/x'. Error: (20) Not a directory"},
        {L"--cstd=@/ --instance=@/file",
         L"'--cout" + denied + L"\n'--cerr" + denied +
             L"\nCannot set instance root, because '@/file' is a file.",
         false},
        {L"--clog=@/", L"'--clog" + denied, true, false},
        {L"--cerr=e --cstd=c --cout=o", L"--cout is conflicting with --cstd", false},
        {L"--cerr=e --cstd=c", L"--cerr is conflicting with --cstd", false},
    };
    for (const auto& c : cases) {
        const auto args = create(L"start " + c.words);
        EXPECT_EQ(args->getMode(), Mode::Error);
        EXPECT_EQ(args->getErrors(), at(c.errors));
        EXPECT_EQ(args->isRedirectionUsable(), c.redirection) << c.errors;
        EXPECT_EQ(args->isLogDestinationUsable(), c.log) << c.errors;
    }
}

TEST_F(LauncherCliArgsTest, ErrorsReachTheLogAndTheRealOutput)
{
    const std::pair<std::wstring, bool> cases[] = {
        {L"start --clog=@/log --instance=/no", true}, {L"start --clog=@/./log --cerr=@/log", false},
        {L"start --clog=@/log --cstd=@/o", false},    {L"start --clog=@/log --what", false},
        {L"stop --clog=@/log --pid=x", false},
    };
    for (const auto& [words, redirected] : cases) {
        std::filesystem::remove(dir_ / "o");
        const auto args = create(words + L" --cout=@/o");
        CaptureStdout();
        LauncherCliArgs::openConsole(*args, args->getClog())->writeLine(L"text");
        EXPECT_EQ(args->getMode(), Mode::Error);
        EXPECT_EQ(args->getClog(), at(L"@/log"));
        EXPECT_EQ(GetCapturedStdout(), redirected ? "" : "text\n");
        EXPECT_EQ(readText(dir_ / "o"), redirected ? "text\n" : "");
    }
    EXPECT_EQ(create(L"start --what --clog=@/log/x")->getClog(), L"");  // below a file
}

}  // namespace
