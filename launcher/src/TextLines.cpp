#include "TextLines.h"

#include <algorithm>

#include "TextConversion.h"

std::optional<std::wstring_view> TextLines::next()
{
    const auto endsLine = [](char c) { return c == '\n' || c == '\r'; };
    rest_ = {std::find_if_not(rest_.begin(), rest_.end(), endsLine), rest_.end()};
    if (rest_.empty()) return std::nullopt;

    const std::string_view line(rest_.begin(), std::find_if(rest_.begin(), rest_.end(), endsLine));
    line_.clear();
    const bool isWhole = appendWide(line, line_);
    rest_ = isWhole ? rest_.substr(line.size()) : "";
    if (line_.empty()) return std::nullopt;
    return line_;
}
