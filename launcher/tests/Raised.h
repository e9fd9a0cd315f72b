// raised: the code and the message that a failing operation ends a run with.
#pragma once

#include <string>

#include "LauncherException.h"

/// "code message" of the LauncherException that `action` throws; "nothing
/// raised" when it throws none.
template <typename Action>
[[nodiscard]] std::wstring raised(Action action)
{
    try {
        action();
    } catch (const LauncherException& e) {
        return std::to_wstring(e.exitCode()) + L" " + e.message();
    }
    return L"nothing raised";
}
