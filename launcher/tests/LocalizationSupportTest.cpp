#include "LocalizationSupport.h"

#include "LinuxSystemUtils.h"
#include "LocalizationResource_Ru.h"
#include "MessageIds.h"
#include "UnitTest.h"

namespace {

TEST(LocalizationSupportTest, FirstCatalogueStaysTheActiveOneAndFillsTextsOfAnyLength)
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
    for (const char* id : {IDS_UNKNOWN_MODE, IDS_INVENTORY_CALL_ERROR, IDS_CANNOT_FIND_JFIELD,
                           IDS_JVN_LIB, IDS_CWD_CHANGED_TO}) {
        EXPECT_EQ(getMessage(id), toWide(id));  // which no table holds
    }
}

TEST(LocalizationSupportTest, FirstJvmOptionWithALanguageDecides)
{
    const std::pair<Texts, const wchar_t*> cases[] = {
        {{L"-Xmx1g", L"-Duser.languages=de"}, L""},
        {{L"-Dx=y\t-Duser.language=De\tx", L"-Duser.language=fr"}, L"de"},
        {{L"-Duser.language=", L"-Duser.language=fr"}, L""},
        {{L"-Duser.language=\u0441A"}, L"aa"},  // U+0441 keeps its lowest 8 bits alone
    };
    for (const auto& [options, language] : cases)
        EXPECT_EQ(getLanguageFromJvmOptions(options), language);
}

}  // namespace
