#include <dlfcn.h>

#include <chrono>
#include <clocale>
#include <ctime>

#include "LinuxProcessUtils.h"
#include "LinuxSystemUtils.h"
#include "PosixLibraryHandle.h"
#include "ProcCommandLine.h"
#include "ScopedEnvironment.h"
#include "UnitTest.h"

namespace {

const LinuxSystemUtils systemUtils;

TEST(LinuxSystemUtilsTest, TakesTheLocaleOfTheEnvironmentAndFallsBackToEnglish)
{
    const ScopedEnvironment all("LC_ALL", "xx_YY.UTF-8");
    EXPECT_EQ(systemUtils.getLocaleName() + L" " + systemUtils.getLanguageName(), L"en_US en");
    if (!std::setlocale(LC_CTYPE, "ru_RU.UTF-8")) GTEST_SKIP() << "the system lacks this locale";
    std::setlocale(LC_CTYPE, "C");
    const ScopedEnvironment russian("LC_ALL", "ru_RU.UTF-8");
    EXPECT_EQ(systemUtils.getLocaleName() + L" " + systemUtils.getLanguageName(), L"ru_RU ru");
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "ru_RU.UTF-8");  // is the process's, too
}

TEST(LinuxSystemUtilsTest, GivesTheLocalTime)
{
    const ScopedEnvironment zone("TZ", "XYZ-5:30");
    const std::time_t before = std::time(nullptr);
    std::tm parsed{};
    strptime(toUtf8(systemUtils.getCurrentTimeText()).c_str(), "%Y/%m/%d-%H:%M:%S", &parsed);
    const std::time_t told = timegm(&parsed) - 19800;  // 5:30 hours
    EXPECT_TRUE(told >= before && told <= std::time(nullptr));
}

TEST(PosixLibraryHandleTest, FindsSymbolsUntilItIsClosed)
{
    const std::wstring name = L"libBrokenLocale.so.1";  // of the C library, else loaded by nobody
    const std::shared_ptr<ILibraryHandle> library = systemUtils.loadLibrary(name);
    std::ignore = systemUtils.loadLibrary(name, 1);  // closes for itself alone
    EXPECT_NE(library->getSymbol("__ctype_get_mb_cur_max"), nullptr);
    EXPECT_TRUE(library->close() && library->isEmpty());
    EXPECT_EQ(library->getSymbol("__ctype_get_mb_cur_max"), nullptr);  // though the process has one
    EXPECT_EQ(dlopen(toUtf8(name).c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
}

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
