#include "LogValue.h"

#include <algorithm>

namespace {

bool needsQuotes(std::wstring_view text)
{
    // Without a branch, to the end: several characters at a time.
    unsigned found = 0;
    for (const wchar_t c : text) {
        found |= static_cast<unsigned>((c == L'\n') | (c == L'\r') | (c == L',') | (c == L'=') |
                                       (c == L'\'') | (c == L'"'));
    }
    return found != 0;
}

}  // namespace

LogValue::LogValue(const std::vector<std::wstring>& list)
{
    for (const std::wstring& item : list) {
        if (&item != &list.front()) owned_ += L';';
        owned_ += item;
    }
    view_ = owned_;
}

void appendQuoted(std::wstring_view value, std::wstring& text)
{
    if (!needsQuotes(value)) {
        text += value;
        return;
    }
    const auto apostrophes = std::count(value.begin(), value.end(), L'\'');
    const auto quotes = std::count(value.begin(), value.end(), L'"');
    const wchar_t quote = apostrophes <= quotes ? L'\'' : L'"';
    text += quote;
    for (const wchar_t character : value) {
        if (character == quote) text += quote;
        text += character;
    }
    text += quote;
}
