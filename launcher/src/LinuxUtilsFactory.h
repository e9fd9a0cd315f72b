// LinuxUtilsFactory: owns the utilities of Linux.
#pragma once

#include "IOsUtilsFactory.h"
#include "LinuxFileUtils.h"
#include "LinuxProcessUtils.h"
#include "LinuxSystemUtils.h"

class LinuxUtilsFactory final : public IOsUtilsFactory {
public:
    [[nodiscard]] IFileUtils& getFileUtils() override { return fileUtils_; }
    [[nodiscard]] IProcessUtils& getProcessUtils() override { return processUtils_; }
    [[nodiscard]] ISystemUtils& getSystemUtils() override { return systemUtils_; }
    [[nodiscard]] const std::wstring& getLineEnd() const override { return lineEnd_; }
    [[nodiscard]] std::unique_ptr<IConsole> createConsole(const std::wstring& coutPath,
                                                          const std::wstring& cerrPath,
                                                          std::wstring& errorText) override;

private:
    LinuxFileUtils fileUtils_;
    LinuxProcessUtils processUtils_;
    LinuxSystemUtils systemUtils_;
    std::wstring lineEnd_{L"\n"};
};
