#include "PidFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <tuple>

#include "UnitTest.h"

namespace {

using PidFileTest = UnitTest;

TEST_F(PidFileTest, SavesTheBareProcessIdAndReadsNineCharactersAtMost)
{
    const std::string file = dir_.write("pid", "an older and longer text");
    PidFile().save(dir_.wide("pid"));
    EXPECT_EQ(readText(file), std::to_string(getpid()));
    std::wostringstream errors;
    EXPECT_EQ(PidFile().read(toWide(dir_.write("pid", " -9999999")), errors), -9'999'999);
    EXPECT_EQ(PidFile().read(toWide(dir_.write("pid", "1234567890")), errors), -1);
    EXPECT_EQ(errors.str(), at(L"Extra characters in PID file '@/pid'"));
    ASSERT_EQ(mkfifo((dir_ / "pipe").c_str(), 0600), 0);  // that nobody reads
    EXPECT_EQ(raised([this] { PidFile().save(dir_.wide("pipe")); }),
              at(L"3 Cannot write file '@/pipe'. Error: (6) No such device or address"));
}

TEST_F(PidFileTest, RemovesItsFileAndTellsWhyItDidNot)
{
    dir_.write("pid", "1");
    ASSERT_EQ(mkfifo((dir_ / "pipe").c_str(), 0600), 0);
    const std::tuple<std::wstring, std::optional<std::wstring>, std::wstring> cases[] = {
        {L"", {}, L"INFO PidFile.remove: No PID file was removed because none was written."},
        {L"@/pid", {}, L"INFO PidFile.remove: PID file was removed path=@/pid"},
        {L"@/pid", {}, L"INFO PidFile.remove: PID file is absent, nothing to remove path=@/pid"},
        {L"@", L"(21) Is a directory",
         L"ERROR PidFile.remove: PID file path points to directory, so will not be deleted path=@"},
        {L"@/pipe", L"(22) Invalid argument",
         L"ERROR PidFile.remove: PID file path points to no regular file, so will not be deleted "
         L"path=@/pipe"},
        {L"/proc/self/status", L"(1) Operation not permitted",
         L"ERROR PidFile.remove: Cannot remove PID file path=/proc/self/status"},
    };
    for (const auto& [path, error, record] : cases) {
        EXPECT_EQ(PidFile().remove(at(path)), error) << record;
        EXPECT_TRUE(log_.lines().back().starts_with(at(record))) << log_.lines().back();
    }
}

}  // namespace
