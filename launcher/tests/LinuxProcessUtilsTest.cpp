#include "LinuxProcessUtils.h"

#include "ProcCommandLine.h"
#include "UnitTest.h"

namespace {

using LinuxProcessUtilsTest = UnitTest;

TEST_F(LinuxProcessUtilsTest, EndsAnArgumentOfACommandLineAtEachZeroByte)
{
    dir_.write("cmdline", {"служба\0\0\0b", 16});
    EXPECT_EQ(readCommandLine(dir_.wide("cmdline")), (Texts{L"служба", L"", L"", L"b"}));
}

TEST_F(LinuxProcessUtilsTest, SleepsForLessThanASecondOnly)
{
    const auto start = std::chrono::steady_clock::now();
    for (const unsigned millis : {30U, 3'600'000U}) LinuxProcessUtils().sleepMilliseconds(millis);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(elapsed.count() >= 0.03 && elapsed.count() < 60);
}

}  // namespace
