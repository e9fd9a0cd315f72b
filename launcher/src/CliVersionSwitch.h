// CliVersionSwitch: asks for the version; its name only serves for display.
#pragma once

#include "CliSwitch.h"

class CliVersionSwitch final : public CliSwitch {
public:
    using CliSwitch::CliSwitch;

    [[nodiscard]] bool matches(std::wstring_view argument) const override
    {
        return argument == L"--version" || argument == L"-v";
    }
};
