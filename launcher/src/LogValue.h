// LogValue: one key or value of a log record as text. Lives only for the log
// call: it may point into the argument that it was made from.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

class LogValue final {
public:
    explicit LogValue(const wchar_t* text) : view_(text ? text : L"") {}
    explicit LogValue(std::wstring_view text) : view_(text) {}
    explicit LogValue(const std::wstring& text) : view_(text) {}
    /// "true" or "false".
    explicit LogValue(bool value) : view_(value ? L"true" : L"false") {}
    /// Decimal digits.
    template <typename Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    explicit LogValue(Integer value)
    {
        const std::string digits = std::to_string(value);
        owned_.assign(digits.begin(), digits.end());
        view_ = owned_;
    }
    /// The texts joined with ';'.
    explicit LogValue(const std::vector<std::wstring>& list);

    LogValue(const LogValue&) = delete;
    LogValue& operator=(const LogValue&) = delete;

    [[nodiscard]] std::wstring_view text() const { return view_; }

private:
    std::wstring owned_;
    std::wstring_view view_;
};

/// Appends `value` to `text`. One that holds a line feed, carriage return,
/// comma, equals sign or quote is put into quotes: apostrophes if it holds no
/// more of them than double quotes, else double quotes; the chosen quote is
/// doubled inside.
void appendQuoted(std::wstring_view value, std::wstring& text);
