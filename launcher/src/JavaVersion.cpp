#include "JavaVersion.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace {

/// The whole number up to the first '.' or '-'.
std::optional<std::int32_t> parseFeatureNumber(std::wstring_view text)
{
    const std::wstring_view piece = text.substr(0, text.find_first_of(L".-"));
    const bool ascii =
        std::all_of(piece.begin(), piece.end(), [](wchar_t character) { return character < 0x80; });
    if (!ascii) return std::nullopt;
    std::string digits;
    for (const wchar_t character : piece) digits += static_cast<char>(character);

    std::int32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc{} || rest != end) return std::nullopt;
    return number;
}

}  // namespace

std::optional<std::int32_t> parseJavaVersion(std::wstring_view version)
{
    if (version.size() < 2) return std::nullopt;
    const bool oldNumbering = version.starts_with(L"1.") || version.starts_with(L"1-");
    return parseFeatureNumber(oldNumbering ? version.substr(2) : version);
}
