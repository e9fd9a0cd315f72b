#include "TextConversion.h"

#include <iconv.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cwchar>
#include <optional>
#include <span>

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr std::size_t kLongestSequence = 4;  ///< in UTF-8

class ErrnoKeeper final {
public:
    ErrnoKeeper() : errno_(errno) {}
    ~ErrnoKeeper() { errno = errno_; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

private:
    int errno_;
};

/// How far a conversion came, in code units.
struct Progress {
    std::size_t read;
    std::size_t written;

    Progress operator+(const Progress& other) const
    {
        return {read + other.read, written + other.written};
    }
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

    /// Up to the first sequence that cannot be converted; nothing when the
    /// conversion itself is not possible.
    template <typename From, typename To>
    [[nodiscard]] std::optional<Progress> convert(std::basic_string_view<From> text,
                                                  std::span<To> output) const
    {
        if (!isOpen()) return std::nullopt;
        // iconv only reads its input, whatever its signature says.
        char* in = const_cast<char*>(reinterpret_cast<const char*>(text.data()));
        std::size_t inSize = text.size() * sizeof(From);
        char* out = reinterpret_cast<char*>(output.data());
        std::size_t room = output.size_bytes();
        const bool failed = iconv(descriptor_, &in, &inSize, &out, &room) == kFailed;
        if (failed && errno != EILSEQ && errno != EINVAL && errno != E2BIG) return std::nullopt;
        return Progress{text.size() - inSize / sizeof(From), output.size() - room / sizeof(To)};
    }

private:
    static constexpr std::size_t kFailed = static_cast<std::size_t>(-1);

    [[nodiscard]] bool isOpen() const
    {
        return descriptor_ != reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr)
    }

    iconv_t descriptor_;
};

/// Copies `text` to as much room. False when it is not all ASCII: then what was
/// copied is of no use.
template <typename From, typename To>
bool copyAscii(std::basic_string_view<From> text, To* output)
{
    // To the end even behind the first that is not: several at a time.
    unsigned bits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bits |= static_cast<unsigned>(text[i]);
        output[i] = static_cast<To>(text[i]);
    }
    return bits < 0x80;
}

template <typename Character>
std::basic_string_view<Character> upToNul(std::basic_string_view<Character> text)
{
    return text.substr(0, text.find(Character{}));
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

// What the Unicode code points up to U+FFFF are in UTF-8 is converted here, which
// takes a fraction of the time; iconv decides on the rest.

/// Up to the first sequence that is longer or invalid.
Progress decodeShortSequences(std::string_view text, wchar_t* output)
{
    wchar_t* out = output;
    std::size_t i = 0;
    while (i < text.size()) {
        const auto first = static_cast<unsigned char>(text[i]);
        if (first < 0x80) {
            *out++ = first;
            ++i;
            continue;
        }
        const unsigned next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0U;
        if (first >= 0xC2 && first <= 0xDF && (next & 0xC0) == 0x80) {
            *out++ = static_cast<wchar_t>((first & 0x1FU) << 6 | (next & 0x3FU));
            i += 2;
            continue;
        }
        const Unit unit = decodeUnit(text.substr(i));
        if (unit.size != 3 || isSurrogate(unit.value)) break;
        *out++ = static_cast<wchar_t>(unit.value);
        i += unit.size;
    }
    return {i, static_cast<std::size_t>(out - output)};
}

/// Up to the first character that takes more bytes or has none.
Progress encodeShortSequences(std::wstring_view text, char* output)
{
    char* out = output;
    std::size_t i = 0;
    for (; i < text.size(); ++i) {
        const auto unit = static_cast<char32_t>(text[i]);
        if (unit >= kFirstSupplementary || isSurrogate(unit)) break;
        if (unit < 0x80) {
            *out++ = static_cast<char>(unit);
            continue;
        }
        if (unit < 0x800) {
            *out++ = static_cast<char>(0xC0 | unit >> 6);
        } else {
            *out++ = static_cast<char>(0xE0 | unit >> 12);
            *out++ = static_cast<char>(0x80 | (unit >> 6 & 0x3F));
        }
        *out++ = static_cast<char>(0x80 | (unit & 0x3F));
    }
    return {i, static_cast<std::size_t>(out - output)};
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

bool appendWide(std::string_view text, std::wstring& wide)
{
    const std::string_view input = upToNul(text);
    const std::size_t before = wide.size();
    wide.resize(before + input.size());
    wchar_t* const output = wide.data() + before;
    if (copyAscii(input, output)) return input.size() == text.size();
    Progress progress = decodeShortSequences(input, output);
    if (progress.read < input.size()) {
        const ErrnoKeeper keeper;
        const std::span room(output + progress.written, input.size() - progress.written);
        const auto rest = Converter("WCHAR_T", "UTF-8").convert(input.substr(progress.read), room);
        progress = rest ? progress + *rest : Progress{};
    }
    wide.resize(before + progress.written);
    return progress.read == text.size();
}

std::wstring toWide(std::string_view text)
{
    std::wstring wide;
    appendWide(text, wide);
    return wide;
}

std::wstring toWide(const char* text)
{
    return text ? toWide(std::string_view(text)) : std::wstring();
}

void appendUtf8(std::wstring_view text, std::string& bytes)
{
    const std::wstring_view input = upToNul(text);
    const std::size_t before = bytes.size();
    bytes.resize(before + input.size());
    if (copyAscii(input, bytes.data() + before)) return;
    bytes.resize(before + input.size() * kLongestSequence);
    char* const output = bytes.data() + before;
    Progress progress = encodeShortSequences(input, output);
    if (progress.read < input.size()) {
        const ErrnoKeeper keeper;
        const std::span room(output + progress.written,
                             input.size() * kLongestSequence - progress.written);
        const auto rest = Converter("UTF-8", "WCHAR_T").convert(input.substr(progress.read), room);
        progress = rest ? progress + *rest : Progress{};
    }
    bytes.resize(before + progress.written);
}

std::string toUtf8(std::wstring_view text)
{
    std::string bytes;
    appendUtf8(text, bytes);
    return bytes;
}

std::string toUtf8(const wchar_t* text)
{
    return text ? toUtf8(std::wstring_view(text)) : std::string();
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
