#include "TextConversion.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(TextConversionTest, WritesTheBytesOfEachEncoding)
{
    EXPECT_EQ(toUtf8(L"ASCII\x7F"), "ASCII\x7F");  // which takes another way
    EXPECT_EQ(toUtf8(L"aé€😀"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(toModifiedUtf8(L"aé€😀"), "a\xC3\xA9\xE2\x82\xAC\xED\xA0\xBD\xED\xB8\x80");
    EXPECT_EQ(toModifiedUtf8({L"\0z", 2}), "\xC0\x80z");
    EXPECT_EQ(toModifiedUtf8(std::wstring{0xD800, 0x110000, -1, L'z'}),
              "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDz");
}

TEST(TextConversionTest, CutsAtNulOrAtTheFirstThatIsNoCharacter)
{
    const std::pair<std::string, std::wstring> toWideCases[] = {
        {{"ab\0cd", 5}, L"ab"},      {{"\xC3\xA9\0\xFF", 4}, L"é"},
        {"é\xC0\xAFsome", L"é"},      // overlong
        {"é\xE0\x80\xAFsome", L"é"},  // the same
        {"é\xED\xA0\x80some", L"é"},  // surrogate
        {"№😀é\xE2\x84", L"№😀é"},      // truncated
    };
    const std::pair<std::wstring, std::string> toUtf8Cases[] = {
        {{L"ab\0cd", 5}, "ab"},
        {{L'a', 0xD800, L'b'}, "a"},
        {{L'é', -1, L'b'}, "é"},
    };
    errno = ENOTTY;
    for (const auto& [bytes, wide] : toWideCases) EXPECT_EQ(toWide(bytes), wide);
    for (const auto& [wide, bytes] : toUtf8Cases) EXPECT_EQ(toUtf8(wide), bytes);
    EXPECT_EQ(toWide(static_cast<const char*>(nullptr)), L"");
    EXPECT_EQ(toUtf8(static_cast<const wchar_t*>(nullptr)), "");
    EXPECT_EQ(errno, ENOTTY);
}

TEST(TextConversionTest, ReplacesWhatIsMalformedInModifiedUtf8AndKeepsTheRest)
{
    const std::pair<std::string, std::wstring> cases[] = {
        {"\xED\xB8\x80\xED\xB8\x80z", L"\xFFFD\xFFFDz"},         // low ones alone
        {"\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80z", L"\xFFFD😀z"},  // high, then a pair
        {"a\xE2\x82", L"a\xFFFD\xFFFD"},                         // truncated
        {"a\xC3z\xFFz", L"a\xFFFDz\xFFFDz"},
        {"\xC1\x81\xE0\x80\x81", L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},  // overlong
        {"\xF0\x9F\x98\x80z", L"\xFFFD\xFFFD\xFFFD\xFFFDz"},          // plain UTF-8
    };
    for (const auto& [bytes, wide] : cases) EXPECT_EQ(fromModifiedUtf8(bytes.c_str()), wide);
    EXPECT_EQ(fromModifiedUtf8(nullptr), L"");
    const std::wstring edges = L"\x1\x7f\x80\x7ff\x800\xffff\x10000\x10ffff";
    EXPECT_EQ(fromModifiedUtf8(toModifiedUtf8(edges).c_str()), edges);
}

}  // namespace
