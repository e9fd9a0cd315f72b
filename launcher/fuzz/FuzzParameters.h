// FuzzParameters: the LauncherParameters of a command line and nothing else
// but the environment. Apart, as the one place that knows their constructor.
#pragma once

#include <memory>

#include "FuzzSupport.h"
#include "IJavaFinder.h"
#include "JavaLibResolver.h"
#include "LauncherCliArgs.h"
#include "LauncherConfig.h"
#include "LauncherParameters.h"
#include "ServiceInstanceParameters.h"

/// A finder for command lines that leave nothing to be found.
class NoJavaFinder final : public IJavaFinder {
public:
    JavaFinderResult find(std::int32_t) override
    {
        check(false, "nobody asks for a Java");
        return {};
    }
    [[nodiscard]] const std::wstring& getErrors() const override { return errors_; }

private:
    std::wstring errors_;
};

/// `cliArgs` must outlive the result.
inline LauncherParameters makeParameters(const LauncherCliArgs& cliArgs)
{
    static const auto& serviceInstance = *ServiceInstanceParameters::create(L"", L"").release();
    static const LauncherConfig& config = *new LauncherConfig(LauncherConfig::read(L"", false));
    static const JavaLibResolver& javaLibResolver = *new JavaLibResolver;
    static NoJavaFinder& javaFinder = *new NoJavaFinder;
    return {cliArgs, serviceInstance, config, javaLibResolver, javaFinder};
}
