// LinuxSystemUtils: time, errors, locale and shared libraries of Linux.
#pragma once

#include "ISystemUtils.h"

class LinuxSystemUtils final : public ISystemUtils {
public:
    [[nodiscard]] std::wstring getCurrentTimeText() const override;
    [[nodiscard]] std::wstring getLastErrorText() const override;
    [[nodiscard]] std::wstring getLocaleName() const override;
    [[nodiscard]] std::wstring getLanguageName() const override;
    [[nodiscard]] std::shared_ptr<ILibraryHandle> loadLibrary(
        const std::wstring& path) const override;
    [[nodiscard]] std::shared_ptr<ILibraryHandle> loadLibrary(const std::wstring& path,
                                                              int option) const override;
};
