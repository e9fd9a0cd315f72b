#include "LauncherOsException.h"

#include <utility>

LauncherOsException::LauncherOsException(std::wstring message)
    : LauncherException(exit_code::kOperatingSystem, std::move(message))
{
}
