// TextLines: the lines of a text file that users or Java installations provide,
// one after the other.
#pragma once

#include <optional>
#include <string>
#include <string_view>

class TextLines final {
public:
    /// `content` is UTF-8 and must outlive the object. LF, CR and CRLF all end
    /// a line. The text ends at the first NUL or invalid sequence.
    explicit TextLines(std::string_view content) : rest_(content) {}

    /// The next line without its end, valid until the next call; empty ones are
    /// left out. Nothing at the end.
    [[nodiscard]] std::optional<std::wstring_view> next();

private:
    std::string_view rest_;
    std::wstring line_;
};
