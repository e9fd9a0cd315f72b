// IJavaLibResolver: finds the JVM library of a Java installation.
#pragma once

#include <string>

class IJavaLibResolver {
public:
    /// Path of the JVM library in `javaHome`. Throws LauncherException
    /// IDS_CANNOT_FIND_JVMLIB (code 4) when it holds none.
    [[nodiscard]] virtual std::wstring resolve(const std::wstring& javaHome) const = 0;
    virtual ~IJavaLibResolver() = default;
};
