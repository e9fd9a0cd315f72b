// ILibraryHandle: a shared library that was loaded, or the reason why not.
#pragma once

#include <string>

class ILibraryHandle {
public:
    /// Address of the exported symbol, or null when there is none.
    [[nodiscard]] virtual void* getSymbol(const char* name) = 0;
    /// Unloads the library; true on success and when there is none.
    virtual bool close() = 0;
    /// True when no library is held.
    [[nodiscard]] virtual bool isEmpty() const = 0;
    /// Why loading failed; empty when it succeeded.
    [[nodiscard]] virtual std::wstring getErrorText() const = 0;
    virtual ~ILibraryHandle() = default;
};
