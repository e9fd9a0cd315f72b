#include "TextConversion.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(TextConversionTest, WritesTheBytesOfEachEncoding)
{
    EXPECT_EQ(toUtf8(L"ASCII\x7F"), "ASCII\x7F");  // which takes another way
    EXPECT_EQ(toUtf8(L"aé€😀"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(toModifiedUtf8({L"aé€😀\0z", 6}),
              "a\xC3\xA9\xE2\x82\xAC\xED\xA0\xBD\xED\xB8\x80\xC0\x80z");
}

TEST(TextConversionTest, CutsAtNulOrAtTheFirstThatIsNoCharacter)
{
    const std::pair<std::string, std::wstring> toWideCases[] = {
        {{"ab\0cd", 5}, L"ab"},      {{"\xC3\xA9\0\xFF", 4}, L"é"},
        {"é\xC0\xAFsome", L"é"},      // overlong
        {"é\xED\xA0\x80some", L"é"},  // surrogate
        {"№😀é\xE2\x84", L"№😀é"},      // truncated
    };
    errno = ENOTTY;
    for (const auto& [bytes, wide] : toWideCases) EXPECT_EQ(toWide(bytes), wide);
    EXPECT_EQ(toUtf8({L"ab\0cd", 5}), "ab");
    EXPECT_EQ(toUtf8(std::wstring{L'é', 0xD800, L'b'}), "é");
    EXPECT_EQ(toWide(static_cast<const char*>(nullptr)), L"");
    EXPECT_EQ(toUtf8(static_cast<const wchar_t*>(nullptr)), "");
    EXPECT_EQ(errno, ENOTTY);
}

TEST(TextConversionTest, ReplacesWhatIsMalformedInModifiedUtf8AndKeepsTheRest)
{
    const std::pair<std::string, std::wstring> cases[] = {
        {"\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80\xED\xB8\x80z", L"\xFFFD😀\xFFFDz"},  // lone ones
        {"a\xC3z\xFFz\xE2\x82", L"a\xFFFDz\xFFFDz\xFFFD\xFFFD"},                   // truncated
        {"\xC1\x81\xE0\x80\x81", L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},               // overlong
        {"\xF0\x9F\x98\x80z", L"\xFFFD\xFFFD\xFFFD\xFFFDz"},                       // plain UTF-8
    };
    for (const auto& [bytes, wide] : cases) EXPECT_EQ(fromModifiedUtf8(bytes.c_str()), wide);
    EXPECT_EQ(fromModifiedUtf8(nullptr), L"");
    const std::wstring edges = L"\x1\x7f\x80\x7ff\x800\xffff\x10000\x10ffff";
    EXPECT_EQ(fromModifiedUtf8(toModifiedUtf8(edges).c_str()), edges);
}

}  // namespace
