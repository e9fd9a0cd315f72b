// CliSwitch: a switch that its name alone selects, case-sensitively.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "ICliSwitch.h"

class CliSwitch : public ICliSwitch {
public:
    CliSwitch(std::wstring name, std::wstring description, bool common)
        : name_(std::move(name)), description_(std::move(description)), common_(common)
    {
    }

    [[nodiscard]] const std::wstring& name() const override { return name_; }
    [[nodiscard]] const std::wstring& description() const override { return description_; }
    [[nodiscard]] bool isCommon() const override { return common_; }
    [[nodiscard]] bool matches(std::wstring_view argument) const override
    {
        return argument == name_;
    }

private:
    std::wstring name_;
    std::wstring description_;
    bool common_;
};
