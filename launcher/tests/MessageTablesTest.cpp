#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "AdditionalTexts.h"
#include "LocalizationResource_Root.h"
#include "LocalizationResource_Ru.h"
#include "MessageIds.h"
#include "ScopedTempDir.h"

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
    EXPECT_EQ(english.size(), 124u);
    EXPECT_EQ(russian.size(), 126u);
    insertAdditionalTexts(L"en", english);
    insertAdditionalTexts(L"ru", russian);
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

TEST(MessageTablesTest, TheDocumentsTellWhatToDoAboutEachText)
{
    // "<file>" there is "%ls" here; lines may break anywhere.
    std::string document = std::regex_replace(readText(TROUBLESHOOTING), std::regex("\\s+"), " ");
    document = std::regex_replace(document, std::regex("<[a-z]+>"), "%");
    const std::size_t reserved = document.find("## Texts of the usage, and reserved ones");
    MessageTexts english;
    LocalizationResource_Root().fill(english);
    insertAdditionalTexts(L"en", english);
    for (const auto& [id, text] : english) {
        if (std::string_view(id).starts_with("IDS_CLI")) continue;  // of the usage
        const std::size_t told = document.find('`' + std::string(id) + '`');
        ASSERT_NE(told, std::string::npos) << id;
        if (told > reserved) continue;
        const std::string said = '`' + std::regex_replace(text, std::regex("%ls|%d"), "%") + '`';
        EXPECT_NE(document.find(said), std::string::npos) << id << ": " << said;
    }
}

}  // namespace
