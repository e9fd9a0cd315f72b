// JavaLibResolver: looks for libjvm.so where Java installations of all ages
// keep it. Stateless, from any thread.
#pragma once

#include <string>

#include "IJavaLibResolver.h"

class JavaLibResolver final : public IJavaLibResolver {
public:
    /// The first place that exists. Throws LauncherOsException when it cannot
    /// be told whether one does.
    [[nodiscard]] std::wstring resolve(const std::wstring& javaHome) const override;
};
