// IJavaFinder: finds a Java installation when none is configured.
#pragma once

#include <cstdint>
#include <string>

struct JavaFinderResult {
    std::wstring path;             ///< Java home; empty when no suitable one was found
    bool fromEnvironment = false;  ///< the path is that of JAVA_HOME
};

class IJavaFinder {
public:
    /// A Java of at least the feature version `minimalJavaVersion`. Never
    /// throws a LauncherException.
    [[nodiscard]] virtual JavaFinderResult find(std::int32_t minimalJavaVersion) = 0;
    /// What went wrong in the last find(), also in one that found a Java.
    [[nodiscard]] virtual const std::wstring& getErrors() const = 0;
    virtual ~IJavaFinder() = default;
};
