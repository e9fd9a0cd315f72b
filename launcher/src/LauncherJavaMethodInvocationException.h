// LauncherJavaMethodInvocationException: a method of the Java interface class
// threw, or its arguments could not be made into Java objects (code 5).
#pragma once

#include <string>

#include "LauncherException.h"

class LauncherJavaMethodInvocationException final : public LauncherException {
public:
    explicit LauncherJavaMethodInvocationException(std::wstring message);
};
