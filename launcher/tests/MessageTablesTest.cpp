#include <algorithm>
#include <regex>

#include "AdditionalTexts.h"
#include "LinuxSystemUtils.h"
#include "LocalizationResource_Ru.h"
#include "LocalizationSupport.h"
#include "MessageIds.h"
#include "UnitTest.h"

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

MessageTexts textsOf(const ILocalizationResource& language)
{
    MessageTexts texts;
    language.fill(texts);
    insertAdditionalTexts(language.getLanguage(), texts);
    return texts;
}

TEST(MessageTablesTest, RussianSaysAllThatEnglishSays)
{
    const MessageTexts russian = textsOf(LocalizationResource_Ru());
    for (const auto& [id, original] : textsOf(LocalizationResource_Root())) {
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
    for (const auto& [id, text] : textsOf(LocalizationResource_Root())) {
        if (std::string_view(id).starts_with("IDS_CLI")) continue;  // of the usage
        const std::size_t told = document.find('`' + std::string(id) + '`');
        ASSERT_NE(told, std::string::npos) << id;
        if (told > reserved) continue;
        const std::string said = '`' + std::regex_replace(text, std::regex("%ls|%d"), "%") + '`';
        EXPECT_NE(document.find(said), std::string::npos) << id << ": " << said;
    }
}

TEST(MessageTablesTest, TheFirstCatalogueStaysTheActiveOneAndFillsTextsOfAnyLength)
{
    {
        const ScopedCatalogue russian{LocalizationResource_Ru()};
        std::ignore = LocalizationSupport(LinuxSystemUtils());
        EXPECT_EQ(formatMessage(IDS_STARTUP_HEADER, std::wstring(L"тест"), L"3", -7),
                  L"тест запущен (launcher 3, x86-64), PID=-7");
        EXPECT_EQ(formatMessage(IDS_INVALID_TIMEOUT, std::wstring(5000, L'ж')).size(), 5026u);
    }
    EXPECT_EQ(raised([] { return getMessage(IDS_NORMAL_EXIT); }),
              L"21 LocalizationSupport was not initialized.");
    const ScopedCatalogue english;
    for (const char* id : {IDS_CANNOT_FIND_JFIELD, IDS_JVN_LIB, IDS_CWD_CHANGED_TO}) {
        EXPECT_EQ(getMessage(id), toWide(id));  // which no table of this language holds
    }
}

}  // namespace
