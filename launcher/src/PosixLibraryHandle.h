// PosixLibraryHandle: sole owner of a dlopen(3) handle. The errors of
// dlerror(3) belong to the calling thread.
#pragma once

#include <string>

#include "ILibraryHandle.h"

class PosixLibraryHandle final : public ILibraryHandle {
public:
    /// Loads the library with all its symbols resolved and global. Never
    /// throws: on failure the handle is empty and getErrorText() tells why.
    explicit PosixLibraryHandle(const std::wstring& path);

    [[nodiscard]] void* getSymbol(const char* name) override;
    bool close() override;
    [[nodiscard]] bool isEmpty() const override { return library_ == nullptr; }
    [[nodiscard]] std::wstring getErrorText() const override { return errorText_; }
    ~PosixLibraryHandle() override;
    PosixLibraryHandle(const PosixLibraryHandle&) = delete;
    PosixLibraryHandle& operator=(const PosixLibraryHandle&) = delete;

private:
    void* library_;
    std::wstring errorText_;
};
