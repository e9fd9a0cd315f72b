// ILocalizationResource: the message texts of one language.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>

/// Message id to UTF-8 text. Keys and values point into the fixed tables.
using MessageTexts = std::map<std::string_view, const char*>;

/// One row of a message table: printf-style text, "%ls" for wide text and
/// "%d" for a signed integer, the same placeholders in every language.
struct MessageText {
    const char* id;
    const char* text;
};

class ILocalizationResource {
public:
    /// Name of the language, "en" or "ru": what a locale is looked up by.
    [[nodiscard]] virtual std::wstring getLanguage() const = 0;
    /// Inserts every text of the table into `catalogue`.
    virtual void fill(MessageTexts& catalogue) const = 0;
    virtual ~ILocalizationResource() = default;
};

/// Inserts the rows of `table` into `catalogue`: the body of every fill().
inline void insertTexts(std::span<const MessageText> table, MessageTexts& catalogue)
{
    for (const MessageText& row : table) catalogue.emplace(row.id, row.text);
}
