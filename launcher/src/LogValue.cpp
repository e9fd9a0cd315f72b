#include "LogValue.h"

#include <algorithm>

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
    const auto apostrophes = std::count(value.begin(), value.end(), L'\'');
    const auto quotes = std::count(value.begin(), value.end(), L'"');
    const bool special = value.find_first_of(L"\n\r,=") != std::wstring_view::npos;
    if (!special && apostrophes == 0 && quotes == 0) {
        text += value;
        return;
    }
    const wchar_t quote = apostrophes <= quotes ? L'\'' : L'"';
    text += quote;
    for (const wchar_t character : value) {
        if (character == quote) text += quote;
        text += character;
    }
    text += quote;
}
