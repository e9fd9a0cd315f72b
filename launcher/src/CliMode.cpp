#include "CliMode.h"

#include <utility>

#include "LauncherException.h"

CliMode::CliMode(bool isDefault, std::wstring name, std::wstring usage, std::wstring description)
    : isDefault_(isDefault),
      name_(std::move(name)),
      usage_(std::move(usage)),
      description_(std::move(description))
{
}

void CliMode::addSwitch(std::unique_ptr<ICliSwitch> cliSwitch)
{
    const std::wstring& name = cliSwitch->name();
    checkNameIsFree(name);
    switches_.emplace(name, std::move(cliSwitch));
}

void CliMode::addOption(const std::wstring& name, const std::wstring& valuePlaceholder,
                        const std::wstring& description, bool common, bool repeatable)
{
    checkNameIsFree(name);
    options_.emplace(name, CliOption(name, description, valuePlaceholder, common, repeatable));
}

const ICliSwitch* CliMode::findSwitch(std::wstring_view argument) const
{
    for (const auto& [name, cliSwitch] : switches_) {
        if (cliSwitch->matches(argument)) return cliSwitch.get();
    }
    return nullptr;
}

const CliOption* CliMode::findOption(std::wstring_view argument) const
{
    for (const auto& [name, option] : options_) {
        if (option.match(argument) != CliOption::Match::None) return &option;
    }
    return nullptr;
}

void CliMode::checkNameIsFree(const std::wstring& name) const
{
    if (switches_.contains(name)) {
        throw LauncherException(L"The name was already defined as a switch");
    }
    if (options_.contains(name)) {
        throw LauncherException(L"The name was already defined as an option");
    }
}
