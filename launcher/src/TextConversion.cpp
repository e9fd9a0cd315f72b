#include "TextConversion.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cwchar>

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr char32_t kFirstSupplementary = 0x10000;

class ErrnoKeeper final {
public:
    ErrnoKeeper() : errno_(errno) {}
    ~ErrnoKeeper() { errno = errno_; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

private:
    int errno_;
};

/// Sole owner of an iconv descriptor.
class Converter final {
public:
    Converter(const char* to, const char* from) : descriptor_(iconv_open(to, from)) {}
    ~Converter()
    {
        if (isOpen()) iconv_close(descriptor_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    /// Bytes written to `output`, up to the first sequence that cannot be
    /// converted; 0 when the conversion itself is not possible.
    [[nodiscard]] std::size_t convert(const void* input, std::size_t inputSize, void* output,
                                      std::size_t room) const
    {
        if (!isOpen()) return 0;
        // iconv only reads its input, whatever its signature says.
        char* in = static_cast<char*>(const_cast<void*>(input));
        char* const begin = static_cast<char*>(output);
        char* out = begin;
        const bool failed = iconv(descriptor_, &in, &inputSize, &out, &room) == kFailed;
        if (failed && errno != EILSEQ && errno != EINVAL && errno != E2BIG) return 0;
        return static_cast<std::size_t>(out - begin);
    }

private:
    static constexpr std::size_t kFailed = static_cast<std::size_t>(-1);

    [[nodiscard]] bool isOpen() const
    {
        return descriptor_ != reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr)
    }

    iconv_t descriptor_;
};

template <typename Character>
bool isAscii(std::basic_string_view<Character> text)
{
    return std::all_of(text.begin(), text.end(),
                       [](Character c) { return static_cast<char32_t>(c) < 0x80; });
}

template <typename Character>
std::basic_string_view<Character> upToNul(std::basic_string_view<Character> text)
{
    return text.substr(0, text.find(Character{}));
}

std::wstring utf8ToWide(std::string_view text)
{
    if (isAscii(text)) return {text.begin(), text.end()};
    const ErrnoKeeper keeper;
    std::wstring wide(text.size(), L'\0');
    const std::size_t written =
        Converter("WCHAR_T", "UTF-8")
            .convert(text.data(), text.size(), wide.data(), wide.size() * sizeof(wchar_t));
    wide.resize(written / sizeof(wchar_t));
    return wide;
}

std::string wideToUtf8(std::wstring_view text)
{
    if (isAscii(text)) {
        std::string ascii(text.size(), '\0');
        std::transform(text.begin(), text.end(), ascii.begin(),
                       [](wchar_t c) { return static_cast<char>(c); });
        return ascii;
    }
    const ErrnoKeeper keeper;
    std::string utf8(text.size() * 4, '\0');
    const std::size_t written =
        Converter("UTF-8", "WCHAR_T")
            .convert(text.data(), text.size() * sizeof(wchar_t), utf8.data(), utf8.size());
    utf8.resize(written);
    return utf8;
}

bool isHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

bool isSurrogate(char32_t unit)
{
    return isHighSurrogate(unit) || isLowSurrogate(unit);
}

void appendByte(char32_t byte, std::string& bytes)
{
    bytes += static_cast<char>(static_cast<unsigned char>(byte));
}

/// Appends a UTF-16 code unit as modified UTF-8 has it.
void appendUnit(char32_t unit, std::string& bytes)
{
    if (unit != 0 && unit < 0x80) {
        appendByte(unit, bytes);
        return;
    }
    if (unit < 0x800) {
        appendByte(0xC0 | unit >> 6, bytes);
    } else {
        appendByte(0xE0 | unit >> 12, bytes);
        appendByte(0x80 | (unit >> 6 & 0x3F), bytes);
    }
    appendByte(0x80 | (unit & 0x3F), bytes);
}

/// A UTF-16 code unit and the bytes that it took.
struct Unit {
    char32_t value;
    std::size_t size;
};

/// The code unit at the start of `bytes`, which must not be empty. A malformed
/// sequence gives U+FFFD for its first byte alone.
Unit decodeUnit(std::string_view bytes)
{
    const auto byte = [bytes](std::size_t i) {
        return static_cast<char32_t>(static_cast<unsigned char>(bytes[i]));
    };
    const auto continues = [&](std::size_t i) {
        return i < bytes.size() && (byte(i) & 0xC0) == 0x80;
    };
    const char32_t first = byte(0);
    if (first < 0x80) return {first, 1};
    if ((first & 0xE0) == 0xC0 && continues(1)) {
        const char32_t value = (first & 0x1F) << 6 | (byte(1) & 0x3F);
        if (value == 0 || value >= 0x80) return {value, 2};
    }
    if ((first & 0xF0) == 0xE0 && continues(1) && continues(2)) {
        const char32_t value = (first & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
        if (value >= 0x800) return {value, 3};
    }
    return {kReplacement, 1};
}

/// The code point at the start of `bytes`, which must not be empty.
Unit decodeCodePoint(std::string_view bytes)
{
    const Unit unit = decodeUnit(bytes);
    if (!isSurrogate(unit.value)) return unit;
    const std::string_view rest = bytes.substr(unit.size);
    if (isHighSurrogate(unit.value) && !rest.empty()) {
        const Unit low = decodeUnit(rest);
        if (isLowSurrogate(low.value)) {
            const char32_t value =
                kFirstSupplementary + ((unit.value & 0x3FF) << 10) + (low.value & 0x3FF);
            return {value, unit.size + low.size};
        }
    }
    return {kReplacement, unit.size};
}

template <typename Number>
std::wstring formatNumber(const char* format, Number value)
{
    char buffer[24];
    const int length = std::snprintf(buffer, sizeof buffer, format, value);
    if (length < 0 || length > static_cast<int>(sizeof buffer)) return L"<format error>";
    return {buffer, buffer + length};
}

}  // namespace

std::wstring toWide(const std::string& text)
{
    return utf8ToWide(upToNul<char>(text));
}

std::wstring toWide(const char* text)
{
    return text ? utf8ToWide(text) : std::wstring();
}

std::string toUtf8(const std::wstring& text)
{
    return wideToUtf8(upToNul<wchar_t>(text));
}

std::string toUtf8(const wchar_t* text)
{
    return text ? wideToUtf8(text) : std::string();
}

std::string toModifiedUtf8(std::wstring_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (const wchar_t c : text) {
        const auto unit = static_cast<char32_t>(c);
        if (unit > kLastCodePoint || isSurrogate(unit)) {
            appendUnit(kReplacement, bytes);
        } else if (unit < kFirstSupplementary) {
            appendUnit(unit, bytes);
        } else {
            appendUnit(0xD800 | (unit - kFirstSupplementary) >> 10, bytes);
            appendUnit(0xDC00 | (unit & 0x3FF), bytes);
        }
    }
    return bytes;
}

std::wstring fromModifiedUtf8(const char* text)
{
    std::wstring wide;
    std::string_view rest = text ? text : "";
    wide.reserve(rest.size());
    while (!rest.empty()) {
        const Unit codePoint = decodeCodePoint(rest);
        wide += static_cast<wchar_t>(codePoint.value);
        rest.remove_prefix(codePoint.size);
    }
    return wide;
}

std::wstring toWString(long value)
{
    return formatNumber("%ld", value);
}

std::wstring toWString(unsigned long value)
{
    return formatNumber("%lu", value);
}

std::wstring toWString(long long value)
{
    return formatNumber("%lld", value);
}

std::wstring toWString(unsigned long long value)
{
    return formatNumber("%llu", value);
}
