// The conversions of text: the input as UTF-8, as the modified UTF-8 of the
// JNI, and as wide text.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "FuzzSupport.h"
#include "TextConversion.h"

namespace {

constexpr int kAnErrno = 4711;

wchar_t toCodePoint(wchar_t unit)
{
    const bool isCodePoint = (unit >= 0 && unit < 0xD800) || (unit > 0xDFFF && unit <= 0x10FFFF);
    return isCodePoint ? unit : L'\xFFFD';
}

void checkUtf8(const std::string& bytes)
{
    const std::wstring wide = toWide(bytes);
    check(toWide(bytes.c_str()) == wide, "a string converts as a terminated array does");
    check(std::string_view(bytes.c_str()).starts_with(toUtf8(wide)), "UTF-8 comes back, or cut");
}

void checkModifiedUtf8(const char* bytes)
{
    const std::wstring wide = fromModifiedUtf8(bytes);
    check(std::all_of(wide.begin(), wide.end(), [](wchar_t c) { return toCodePoint(c) == c; }),
          "modified UTF-8 gives code points");
    check(fromModifiedUtf8(toModifiedUtf8(wide).c_str()) == wide, "which come back as they were");
}

void checkWide(const std::wstring& units)
{
    const std::wstring_view upToNul = units.c_str();
    check(upToNul.starts_with(toWide(toUtf8(units))), "wide text comes back, or cut");
    std::wstring codePoints = units;
    std::transform(units.begin(), units.end(), codePoints.begin(), toCodePoint);
    check(toWide(toUtf8(codePoints)) == codePoints.c_str(), "code points come back up to a NUL");
    check(fromModifiedUtf8(toModifiedUtf8(units).c_str()) == codePoints,
          "by modified UTF-8 all code points come back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    errno = kAnErrno;
    const std::string bytes(asText(data, size));
    std::wstring units(size / sizeof(wchar_t), L'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(wchar_t));
    checkUtf8(bytes);
    checkModifiedUtf8(bytes.c_str());
    checkWide(units);
    check(errno == kAnErrno, "errno stays");
    return 0;
}
