#include "JavaVersion.h"

#include <gtest/gtest.h>

#include <vector>

#include "JavaStackSize.h"

namespace {

TEST(JavaVersionTest, TellsTheFeatureVersionOfAVersionProperty)
{
    for (const auto& [property, version] :
         {std::pair(L"1.8.0_292", 8), {L"1-8", 8}, {L"21-ea", 21}}) {
        EXPECT_EQ(parseJavaVersion(property), version);
    }
    // Also one that is a single character.
    for (const wchar_t* property : {L"9", L"1.", L"17a.1", L"99999999999", L"１７"}) {
        EXPECT_EQ(parseJavaVersion(property), std::nullopt);
    }
}

TEST(JavaStackSizeTest, FollowsTheLastOptionThatNamesASize)
{
    const std::pair<std::vector<std::wstring>, std::size_t> cases[] = {
        {{L"-Xss0x4000k", L"-Xss0x", L"-Xss1x4", L"-Xss 1m"}, 16u << 20},
        {{L"-Xss512K", L"-Xss1G", L"-Dx=-Xss5m"}, 1u << 30},
        {{L"-Xss64m", L"-XX:ThreadStackSize=2048"}, 2u << 20},
        {{L"-Xss64m", L"-Xss", L"-Xssm", L"-Xss1x", L"-Xss1mm", L"-Xss-1"}, 64u << 20},
        {{L"-Xss99999999999999999999m", L"-XX:ThreadStackSize=99999999999999999999"}, 0},
    };
    for (const auto& [options, size] : cases) EXPECT_EQ(javaStackSize(options), size);
}

}  // namespace
