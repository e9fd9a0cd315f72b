// IServiceInstanceParameters: the settings that an administrator gives to one
// service. Immutable.
#pragma once

#include <string>
#include <vector>

class IServiceInstanceParameters {
public:
    /// Empty when none is given.
    [[nodiscard]] virtual std::wstring getJavaHome() const = 0;
    /// In the order given.
    [[nodiscard]] virtual std::vector<std::wstring> getJvmOptions() const = 0;
    virtual void logState() const = 0;
    virtual ~IServiceInstanceParameters() = default;
};
