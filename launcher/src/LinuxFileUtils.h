// LinuxFileUtils: files, directories and paths of Linux.
#pragma once

#include "IFileUtils.h"

class LinuxFileUtils final : public IFileUtils {
public:
    void createDirectories(const std::wstring& path) const override;
    void createParentDirectories(const std::wstring& path) const override;
    [[nodiscard]] std::wstring touchFile(const std::wstring& path) const override;
    [[nodiscard]] std::wstring getAbsolutePath(const std::wstring& path) const override;
    [[nodiscard]] std::wstring getParentDirectory(const std::wstring& path) const override;
    [[nodiscard]] BinaryType getBinaryType(const std::wstring& path) const override;
    [[nodiscard]] wchar_t getPathListSeparator() const override { return L':'; }
    [[nodiscard]] wchar_t getDirectorySeparator() const override { return L'/'; }
    [[nodiscard]] bool fileExists(const std::wstring& path) const override;
    [[nodiscard]] bool isDirectory(const std::wstring& path) const override;
    bool deleteFile(const std::wstring& path) const override;
    [[nodiscard]] std::shared_ptr<FileContent> readFile(const std::wstring& path) const override;
    void writeFile(const void* data, std::uint32_t size, const std::wstring& path) const override;
    [[nodiscard]] std::vector<std::wstring> listFiles(const std::wstring& directory,
                                                      const std::wstring& mask) const override;
};
