#include "JavaStackSize.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

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
