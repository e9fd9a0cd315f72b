#include "JavaStackSize.h"

#include <cerrno>
#include <cwchar>
#include <cwctype>
#include <limits>
#include <optional>
#include <string_view>

namespace {

constexpr std::wstring_view kXss = L"-Xss";
constexpr std::wstring_view kThreadStackSize = L"-XX:ThreadStackSize=";

/// What the unit letter behind a size multiplies it by; nothing if it is none.
std::optional<std::size_t> unitFactor(std::wstring_view unit)
{
    if (unit.empty()) return 1;
    if (unit.size() > 1) return std::nullopt;
    switch (std::towlower(static_cast<std::wint_t>(unit.front()))) {
        case L'k':
            return std::size_t{1} << 10;
        case L'm':
            return std::size_t{1} << 20;
        case L'g':
            return std::size_t{1} << 30;
        case L't':
            return std::size_t{1} << 40;
        default:
            return std::nullopt;
    }
}

std::optional<std::size_t> multiply(std::size_t a, std::size_t b)
{
    if (b != 0 && a > std::numeric_limits<std::size_t>::max() / b) return std::nullopt;
    return a * b;
}

/// A size as HotSpot reads it: digits, hexadecimal ones behind "0x", and
/// perhaps a unit.
std::optional<std::size_t> parseSize(const wchar_t* text)
{
    // Only a digit may come first: no blank, no sign.
    if (*text < L'0' || *text > L'9') return std::nullopt;
    const std::wstring_view digits = text;
    const bool hexadecimal = digits.starts_with(L"0x") || digits.starts_with(L"0X");
    wchar_t* unit = nullptr;
    errno = 0;
    const std::size_t value = std::wcstoull(text, &unit, hexadecimal ? 16 : 10);
    if (errno != 0) return std::nullopt;
    const auto factor = unitFactor(unit);
    return factor ? multiply(value, *factor) : std::nullopt;
}

std::optional<std::size_t> stackSizeOf(const std::wstring& option)
{
    if (option.starts_with(kXss)) return parseSize(option.c_str() + kXss.size());
    if (!option.starts_with(kThreadStackSize)) return std::nullopt;
    const auto kibibytes = parseSize(option.c_str() + kThreadStackSize.size());
    return kibibytes ? multiply(*kibibytes, 1024) : std::nullopt;
}

}  // namespace

std::size_t javaStackSize(const std::vector<std::wstring>& jvmOptions)
{
    std::size_t size = 0;
    for (const std::wstring& option : jvmOptions) {
        if (const auto asked = stackSizeOf(option)) size = *asked;
    }
    return size;
}
