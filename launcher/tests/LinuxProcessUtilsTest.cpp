#include "LinuxProcessUtils.h"

#include "ProcCommandLine.h"
#include "UnitTest.h"

namespace {

using LinuxProcessUtilsTest = UnitTest;

TEST_F(LinuxProcessUtilsTest, EndsAnArgumentOfACommandLineAtEachZeroByte)
{
    dir_.write("cmdline", {"служба\0\0\0b", 16});
    EXPECT_EQ(readCommandLine(dir_.wide("cmdline")), (Texts{L"служба", L"", L"", L"b"}));
    EXPECT_EQ(raised([&] { return readCommandLine(L"/none"); }),
              L"20 Cannot read command line. Error: (2) No such file or directory");
    EXPECT_EQ(raised([&] { return readCommandLine(L"/"); }),
              L"20 Cannot read command line. Error: (21) Is a directory");
}

TEST_F(LinuxProcessUtilsTest, SleepsForLessThanASecondOnly)
{
    const auto start = std::chrono::steady_clock::now();
    for (const unsigned millis : {30U, 3'600'000U}) LinuxProcessUtils().sleepMilliseconds(millis);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(elapsed >= std::chrono::milliseconds(30) && elapsed < std::chrono::seconds(60));
}

}  // namespace
