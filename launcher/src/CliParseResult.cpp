#include "CliParseResult.h"

#include <utility>

#include "ErrorText.h"

CliParseResult::CliParseResult(std::wstring modeName) : modeName_(std::move(modeName)) {}

bool CliParseResult::hasSwitch(const std::wstring& displayName) const
{
    return switches_.contains(displayName);
}

const std::wstring* CliParseResult::firstSwitch() const
{
    return switches_.empty() ? nullptr : &switches_.begin()->first;
}

bool CliParseResult::hasOption(const std::wstring& name) const
{
    return options_.contains(name);
}

std::wstring CliParseResult::getOptionValue(const std::wstring& name,
                                            const std::wstring& defaultText) const
{
    const auto option = options_.find(name);
    return option == options_.end() ? defaultText : option->second.front();
}

std::vector<std::wstring> CliParseResult::getOptionValues(const std::wstring& name) const
{
    const auto option = options_.find(name);
    return option == options_.end() ? std::vector<std::wstring>() : option->second;
}

bool CliParseResult::addSwitch(const std::wstring& displayName)
{
    return switches_.emplace(displayName, true).second;
}

void CliParseResult::addOptionValue(const std::wstring& name, std::wstring_view value)
{
    options_[name].emplace_back(value);
}

void CliParseResult::addError(const std::wstring& text)
{
    appendErrorText(text, errors_);
}
