// What the launcher itself takes from the options of the JVM.
#include <gtest/gtest.h>

#include "IgnoredJvmOptions.h"
#include "JavaStackSize.h"
#include "LocalizationSupport.h"

namespace {

using Options = std::vector<std::wstring>;

TEST(JvmOptionsTest, ThereIsAdviceOnEachOptionThatTheJvmSkips)
{
    const Options options = {L"-cp", L"a.jar", L"-jar", L"-Xmx1g", L"b.jar", L"--add-opens",
                             L"a/b=c", L"-javaagent", L"a.jar", L"--source", L"17",
                             L"--class-path=a", L"@a", L"b", L"",
                             // What a JVM reads, or may read one day.
                             L"--add-opens=a/b=c", L"-Xnew", L"--new", L"-javaagent:a.jar"};
    IgnoredJvmOptions ignored;
    Options advised;
    for (const std::wstring& option : options) {
        if (ignored.adviceOn(option)) advised.push_back(option);
    }
    EXPECT_EQ(advised, (Options{L"-cp", L"-jar", L"b.jar", L"--add-opens", L"-javaagent",
                                L"--source", L"--class-path=a", L"@a", L"b", L""}));
    EXPECT_EQ(IgnoredJvmOptions().adviceOn(L"-javaagent"), L"one word, -javaagent:VALUE");
}

TEST(JvmOptionsTest, TheLastThatNamesASizeIsThatOfTheStack)
{
    const std::pair<Options, std::size_t> cases[] = {
        {{L"-Xss0x4000k", L"-Xss0x", L"-Xss1x4", L"-Xss 1m"}, 16u << 20},
        {{L"-Xss512K", L"-Xss1G", L"-Dx=-Xss5m"}, 1u << 30},
        {{L"-Xss64m", L"-XX:ThreadStackSize=2048"}, 2u << 20},
        {{L"-Xss99999999999999999999m", L"-XX:ThreadStackSize=99999999999999999"}, 0},
    };
    for (const auto& [options, size] : cases) EXPECT_EQ(javaStackSize(options), size);
}

TEST(JvmOptionsTest, TheFirstWithALanguageDecides)
{
    const std::pair<Options, std::wstring> cases[] = {
        {{L"-Duser.languages=fr", L"-Dx=y\t-Duser.language=De\tx", L"-Duser.language=fr"}, L"de"},
        {{L"-Duser.language=", L"-Duser.language=fr"}, L""},
        {{L"-Duser.language=\u0441A"}, L"aa"},  // U+0441 keeps its lowest 8 bits alone
    };
    for (const auto& [options, language] : cases) {
        EXPECT_EQ(getLanguageFromJvmOptions(options), language);
    }
}

}  // namespace
