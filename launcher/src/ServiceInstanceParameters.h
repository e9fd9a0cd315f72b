// ServiceInstanceParameters: the settings in a service's ini file, lines of
// `key=value` in UTF-8. Made once by main on the main thread. A missing file is
// normal; one that cannot be read is told by logState() and otherwise taken for
// missing.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "IServiceInstanceParameters.h"
#include "ServiceIniDirectory.h"

class ServiceInstanceParameters final : public IServiceInstanceParameters {
public:
    /// Reads the file `serviceName` in `directory`, which ends in a slash;
    /// none when the name is empty. Throws no LauncherException.
    [[nodiscard]] static std::unique_ptr<ServiceInstanceParameters> create(
        const std::wstring& serviceName, const std::wstring& directory = kServiceIniDirectory);

    [[nodiscard]] std::wstring getJavaHome() const override { return javaHome_; }
    [[nodiscard]] std::vector<std::wstring> getJvmOptions() const override { return jvmOptions_; }
    void logState() const override;
    /// "<unspecified>" when there is no service name.
    [[nodiscard]] std::wstring getFileName() const;

private:
    explicit ServiceInstanceParameters(std::wstring serviceName);

    /// Throws LauncherOsException.
    void readFile();
    void interpret(std::wstring_view line);
    void logFileRead() const;

    std::wstring serviceName_;
    std::wstring javaHome_;
    std::vector<std::wstring> jvmOptions_;
    std::wstring fileName_;
    std::wstring errorMessage_;
    std::vector<std::wstring> unknownOptions_;
    bool fileRead_ = false;
};
