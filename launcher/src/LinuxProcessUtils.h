// LinuxProcessUtils: this process on Linux.
#pragma once

#include "IProcessUtils.h"

class LinuxProcessUtils final : public IProcessUtils {
public:
    [[nodiscard]] std::vector<std::wstring> getCommandLine() const override;
    [[nodiscard]] std::vector<std::wstring> argumentsToList(int argc,
                                                            const char* const* argv) const override;
    [[nodiscard]] std::vector<std::wstring> argumentsToList(
        int argc, const wchar_t* const* argv) const override;
    [[nodiscard]] std::int32_t getCurrentProcessId() const override;
    [[nodiscard]] std::wstring getExecutablePath() const override;
    [[nodiscard]] std::wstring getExecutableDirectory() const override;
    void changeCurrentDirectory(const std::wstring& path) const override;
    void sleepMilliseconds(std::uint64_t milliseconds) const override;
    [[nodiscard]] std::wstring getEnvironmentVariable(const std::wstring& name) const override;
};
