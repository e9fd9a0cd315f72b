#include "LauncherJavaMethodInvocationException.h"

#include <utility>

LauncherJavaMethodInvocationException::LauncherJavaMethodInvocationException(std::wstring message)
    : LauncherException(exit_code::kJavaInvocation, std::move(message))
{
}
