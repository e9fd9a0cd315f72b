// TextTrim: a text without the blanks around it.
#pragma once

#include <string_view>
#include <type_traits>

/// `text` without the characters of `blanks` at both ends; a view of the same
/// characters. Empty when it holds nothing else.
template <typename Character>
[[nodiscard]] std::basic_string_view<Character> trim(
    std::basic_string_view<Character> text,
    std::type_identity_t<std::basic_string_view<Character>> blanks)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}
