// LauncherOsException: an operation of the operating system failed (code 20).
#pragma once

#include <string>

#include "LauncherException.h"

class LauncherOsException final : public LauncherException {
public:
    explicit LauncherOsException(std::wstring message);
};
