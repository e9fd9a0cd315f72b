// DirHandle: sole owner of an open directory stream (DIR*).
// Never throws or logs: whether a failed open is an answer ("nothing there")
// or an error is the caller's choice. Not shared between threads.
#pragma once

#include <dirent.h>

#include <memory>
#include <string>

class DirHandle final {
public:
    /// Opens `path` (UTF-8). On failure isOpen() is false and errno is set.
    explicit DirHandle(const std::string& path);

    [[nodiscard]] bool isOpen() const { return stream_ != nullptr; }
    /// Next entry name (bytes, readdir order, "." and ".." included), valid
    /// until the next call; null at the end, with errno 0, and on failure, with
    /// errno set. Requires isOpen().
    [[nodiscard]] const char* nextName();

private:
    struct Closer {
        void operator()(DIR* stream) const { closedir(stream); }
    };
    std::unique_ptr<DIR, Closer> stream_;
};
