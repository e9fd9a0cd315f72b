#include "LinuxProcessUtils.h"

#include "ProcCommandLine.h"
#include "UnitTest.h"

namespace {

using LinuxProcessUtilsTest = UnitTest;

TEST_F(LinuxProcessUtilsTest, EndsAnArgumentOfACommandLineAtEachZeroByte)
{
    const std::pair<std::string, Texts> cases[] = {
        {"", {}},
        {{"a\0\0\0b", 5}, {L"a", L"", L"", L"b"}},
        {{"служба\0\0", 14}, {L"служба", L""}},
        {std::string(100'000, 'y'), {std::wstring(100'000, L'y')}},
    };
    for (const auto& [bytes, arguments] : cases) {
        dir_.write("cmdline", bytes);
        EXPECT_EQ(readCommandLine(dir_.wide("cmdline")), arguments);
    }
    EXPECT_EQ(raised([&] { return readCommandLine(L"/none"); }),
              L"20 Cannot read command line. Error: (2) No such file or directory");
    EXPECT_EQ(raised([&] { return readCommandLine(L"/"); }),
              L"20 Cannot read command line. Error: (21) Is a directory");
}

TEST_F(LinuxProcessUtilsTest, SleepsForLessThanASecondOnly)
{
    const auto start = std::chrono::steady_clock::now();
    LinuxProcessUtils().sleepMilliseconds(30);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    LinuxProcessUtils().sleepMilliseconds(3'600'000);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

}  // namespace
