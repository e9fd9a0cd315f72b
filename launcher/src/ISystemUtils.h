// ISystemUtils: time, errors, locale and shared libraries. Stateless. Only
// the two locale questions change the process: they set its LC_CTYPE from the
// environment, so they are for the main thread.
#pragma once

#include <memory>
#include <string>

class ILibraryHandle;

class ISystemUtils {
public:
    /// Local time, "2024/03/07-09:05:01.042".
    [[nodiscard]] virtual std::wstring getCurrentTimeText() const = 0;
    /// The current errno as "(2) No such file or directory". To be called
    /// right after the call that failed, in a statement of its own.
    [[nodiscard]] virtual std::wstring getLastErrorText() const = 0;
    /// The environment's locale without codeset and modifier, "ru_RU"; "en_US"
    /// when it is unset, unknown to the system, "C" or "POSIX".
    [[nodiscard]] virtual std::wstring getLocaleName() const = 0;
    /// The language of that locale, "ru"; "en" in the same cases.
    [[nodiscard]] virtual std::wstring getLanguageName() const = 0;
    /// Loads a shared library. Never throws: a handle that is empty tells why.
    [[nodiscard]] virtual std::shared_ptr<ILibraryHandle> loadLibrary(
        const std::wstring& path) const = 0;
    /// The same; `option` is not used on Linux.
    [[nodiscard]] virtual std::shared_ptr<ILibraryHandle> loadLibrary(const std::wstring& path,
                                                                      int option) const = 0;
    virtual ~ISystemUtils() = default;
};
