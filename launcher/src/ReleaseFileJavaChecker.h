// ReleaseFileJavaChecker: judges a Java installation by its file "release",
// without running anything of it. Stateless, from any thread.
#pragma once

#include <cstdint>
#include <string>

#include "IJavaChecker.h"

class IFileUtils;

class ReleaseFileJavaChecker final : public IJavaChecker {
public:
    /// `fileUtils` must outlive the checker.
    explicit ReleaseFileJavaChecker(const IFileUtils& fileUtils) : fileUtils_(fileUtils) {}

    /// False also when the file is missing, cannot be read (logged at WARN) or
    /// lacks the architecture or the version.
    [[nodiscard]] bool check(const std::wstring& javaHome,
                             std::int32_t minimalJavaVersion) const override;

private:
    const IFileUtils& fileUtils_;
};
