// ICliSwitch: a word of the command line that takes no value.
#pragma once

#include <string>
#include <string_view>

class ICliSwitch {
public:
    /// What the usage shows, and what the switch is stored and reported under.
    [[nodiscard]] virtual const std::wstring& name() const = 0;
    [[nodiscard]] virtual const std::wstring& description() const = 0;
    /// True when the usage lists it among the common parameters.
    [[nodiscard]] virtual bool isCommon() const = 0;
    /// True when `argument` selects this switch.
    [[nodiscard]] virtual bool matches(std::wstring_view argument) const = 0;
    virtual ~ICliSwitch() = default;
};
