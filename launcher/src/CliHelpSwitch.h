// CliHelpSwitch: asks for the usage; its name only serves for display.
#pragma once

#include "CliSwitch.h"

class CliHelpSwitch final : public CliSwitch {
public:
    using CliSwitch::CliSwitch;

    [[nodiscard]] bool matches(std::wstring_view argument) const override
    {
        return argument == L"--help" || argument == L"-h" || argument == L"-?";
    }
};
