#include "LauncherException.h"

#include <utility>

LauncherException::LauncherException(std::uint32_t exitCode, std::wstring message)
    : message_(std::move(message)), exitCode_(exitCode)
{
}

LauncherException::LauncherException(std::wstring message)
    : LauncherException(exit_code::kInternal, std::move(message))
{
}

LauncherException::~LauncherException() = default;
