// CliMode: one mode of a program (the first word of its command line) with
// the switches and options that may follow. Both are kept, and searched, in
// the order of their names. Immutable once the definition stands.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "CliOption.h"
#include "ICliSwitch.h"

class CliMode final {
public:
    /// `usage` is what the usage shows behind the program name.
    CliMode(bool isDefault, std::wstring name, std::wstring usage, std::wstring description);

    // Both throw LauncherException "The name was already defined as a switch"
    // or "... as an option" (code 21) for a name that the mode holds.
    void addSwitch(std::unique_ptr<ICliSwitch> cliSwitch);
    void addOption(const std::wstring& name, const std::wstring& valuePlaceholder,
                   const std::wstring& description, bool common, bool repeatable);

    [[nodiscard]] bool isDefault() const { return isDefault_; }
    [[nodiscard]] const std::wstring& name() const { return name_; }
    [[nodiscard]] const std::wstring& usage() const { return usage_; }
    [[nodiscard]] const std::wstring& description() const { return description_; }
    [[nodiscard]] const auto& switches() const { return switches_; }
    [[nodiscard]] const auto& options() const { return options_; }

    /// The first switch that `argument` selects, or null.
    [[nodiscard]] const ICliSwitch* findSwitch(std::wstring_view argument) const;
    /// The first option that `argument` names, or null.
    [[nodiscard]] const CliOption* findOption(std::wstring_view argument) const;

private:
    void checkNameIsFree(const std::wstring& name) const;

    bool isDefault_;
    std::wstring name_;
    std::wstring usage_;
    std::wstring description_;
    std::map<std::wstring, std::unique_ptr<ICliSwitch>> switches_;
    std::map<std::wstring, CliOption> options_;
};
