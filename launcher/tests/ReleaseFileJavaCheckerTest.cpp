#include "ReleaseFileJavaChecker.h"

#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "UnitTest.h"

namespace {

class ReleaseFileJavaCheckerTest : public UnitTest {
protected:
    [[nodiscard]] bool suits(const std::string& release, std::int32_t minimalJavaVersion) const
    {
        dir_.write("release", release);
        return checker_.check(dir_.wide(), minimalJavaVersion);
    }

    ReleaseFileJavaChecker checker_{getOsUtilsFactory().getFileUtils()};
};

TEST_F(ReleaseFileJavaCheckerTest, AsksForAVersionAndA64BitArchitecture)
{
    const std::pair<std::string, std::int32_t> versions[] = {
        {"\"1.8.0_292\"", 8}, {"1-8", 8}, {"\"17\"", 17}, {"21-ea", 21}};
    for (const auto& [version, feature] : versions) {
        const std::string release = "OS_ARCH=\"x86_64\"\r\nJAVA_VERSION=" + version + "\r\n";
        EXPECT_TRUE(suits(release, feature)) << version;
        EXPECT_FALSE(suits(release, feature + 1)) << version;
    }
    for (const char* none : {"\"9\"", "9", "\"", "1.", "17u.0", "4294967313", "１７"}) {
        EXPECT_FALSE(suits("OS_ARCH=amd64\nJAVA_VERSION=" + std::string(none), 8)) << none;
    }
    for (const char* release :
         {"OS_ARCH=i386\nJAVA_VERSION=17", "JAVA_VERSION=17", "OS_ARCH=amd64",
          " OS_ARCH=amd64\nJAVA_VERSION=17", "OS_ARCH=OS_ARCH=64\nJAVA_VERSION=17",
          "OS_ARCH=amd64\nJAVA_VERSION=17\nJAVA_VERSION=8.0"}) {
        EXPECT_FALSE(suits(release, 17)) << release;
    }
}

TEST_F(ReleaseFileJavaCheckerTest, AnswersNoWhereThereIsNoReleaseFileToRead)
{
    EXPECT_FALSE(checker_.check(dir_.wide("missing"), 8));
    EXPECT_EQ(log_.lines(), Texts{});
    dir_.write("file", "");
    EXPECT_FALSE(checker_.check(dir_.wide("file"), 8));
    EXPECT_NE(log_.lines().at(0).find(L"(20) Not a directory"), std::wstring::npos);
}

}  // namespace
