// IJavaChecker: tells whether a Java installation suits an application.
#pragma once

#include <cstdint>
#include <string>

class IJavaChecker {
public:
    /// True when `javaHome` holds a 64-bit Java of at least the feature
    /// version `minimalJavaVersion`.
    [[nodiscard]] virtual bool check(const std::wstring& javaHome,
                                     std::int32_t minimalJavaVersion) const = 0;
    virtual ~IJavaChecker() = default;
};
