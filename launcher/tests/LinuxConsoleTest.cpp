#include "LinuxConsole.h"

#include <cstdio>

#include "UnitTest.h"

namespace {

class LinuxConsoleTest : public UnitTest {
protected:
    /// Writes to a new console over the files "stdout" and "stderr"; gives the error text.
    [[nodiscard]] std::string run(const std::wstring& coutPath, const std::wstring& cerrPath) const
    {
        static char buffer[BUFSIZ];  // as in a new process
        std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        std::fputs("before\n", stdout);
        std::wstring errorText;
        LinuxConsole console(coutPath, cerrPath, errorText);
        console.write(L"out ");
        console.writeError(L"err ");
        console.writeLine(L"вывод");
        console.writeErrorLine(L"ошибка");
        // One with a destination must be unbuffered.
        dir_.write("now", text("a"));
        dir_.write("stdout", testing::internal::GetCapturedStdout());
        dir_.write("stderr", testing::internal::GetCapturedStderr());
        return toUtf8(errorText);
    }
    [[nodiscard]] std::string text(const std::string& name) const { return readText(dir_ / name); }
};

TEST_F(LinuxConsoleTest, AppendsEachStreamToItsFile)
{
    dir_.write("a", "old ");
    EXPECT_EQ(run(dir_.wide("a"), dir_.wide("b")), "");
    EXPECT_EQ(text("now"), "old out вывод\n");
    EXPECT_EQ(text("b"), "err ошибка\n");
    // Both to one file: in the order of writing.
    EXPECT_EQ(run(dir_.wide("a"), dir_.wide("a")), "");
    EXPECT_EQ(text("now"), "old out вывод\nout err вывод\nошибка\n");
}

TEST_F(LinuxConsoleTest, TellsOfAFailedRedirectionAndKeepsTheStream)
{
    const std::wstring place = dir_.wide("none/a");
    const std::string bad = toUtf8(place), reason = ". Error: (2) No such file or directory";
    EXPECT_EQ(run(place, L""), "'--cout' destination '" + bad + "' is not accessible.");
    EXPECT_EQ(text("stdout"), "before\nout вывод\n");
    EXPECT_EQ(run(L"", place), "'--cerr' destination '" + bad + "' is not accessible" + reason);
    EXPECT_EQ(text("stderr"), "err ошибка\n");
    EXPECT_EQ(run(place, place),
              "--cout and --cerr destinations are not accessible: " + bad + reason);
}

}  // namespace
