#include <gtest/gtest.h>

#include <algorithm>

#include "LocalizationResource_Root.h"
#include "LocalizationResource_Ru.h"
#include "MessageIds.h"

namespace {

/// What a formatter takes from the argument list: the letters behind every '%'.
std::string placeholders(std::string_view text)
{
    std::string found;
    for (std::size_t at = text.find('%'); at != text.npos; at = text.find('%', at + 1)) {
        found += text.substr(at, text.substr(at).starts_with("%ls") ? 3 : 2);
    }
    return found;
}

TEST(MessageTablesTest, RussianSaysAllThatEnglishSaysAndTwoThingsMore)
{
    MessageTexts english, russian;
    LocalizationResource_Root().fill(english);
    LocalizationResource_Ru().fill(russian);
    EXPECT_EQ(english.size(), 126u);
    EXPECT_EQ(russian.size(), 128u);

    EXPECT_TRUE(russian.contains(IDS_JVN_LIB) && russian.contains(IDS_CWD_CHANGED_TO));
    for (const auto& [id, original] : english) {
        ASSERT_TRUE(russian.contains(id)) << id;
        const std::string_view text = russian.at(id), before = original;
        EXPECT_TRUE(std::any_of(text.begin(), text.end(), [](char c) { return c < 0; })) << id;
        // The same arguments, and joined alike.
        EXPECT_EQ(placeholders(text), placeholders(before)) << id;
        EXPECT_EQ(text.starts_with(' '), before.starts_with(' ')) << id;
        EXPECT_EQ(text.ends_with('.'), before.ends_with('.')) << id;
    }
}

}  // namespace
