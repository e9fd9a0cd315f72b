#include "CliOption.h"

#include <utility>

CliOption::CliOption(std::wstring name, std::wstring description, std::wstring valuePlaceholder,
                     bool common, bool repeatable)
    : name_(std::move(name)),
      description_(std::move(description)),
      valuePlaceholder_(std::move(valuePlaceholder)),
      common_(common),
      repeatable_(repeatable)
{
}

std::wstring CliOption::synopsis() const
{
    return valuePlaceholder_.empty() ? name_ : name_ + L"=" + valuePlaceholder_;
}

CliOption::Match CliOption::match(std::wstring_view argument) const
{
    if (argument == name_) return Match::SeparateValue;
    const bool isInline = argument.starts_with(name_) && argument[name_.size()] == L'=';
    return isInline ? Match::InlineValue : Match::None;
}

std::wstring_view CliOption::inlineValue(std::wstring_view argument) const
{
    return argument.substr(name_.size() + 1);
}
