// FileHandle: sole owner of an open stdio stream.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

struct FileCloser {
    void operator()(FILE* stream) const { fclose(stream); }
};

using FileHandle = std::unique_ptr<FILE, FileCloser>;

/// Opens `path` (UTF-8) as fopen(3) does; the descriptor does not leak into
/// child processes. Null with errno on failure.
[[nodiscard]] inline FileHandle openFile(const std::string& path, const std::string& mode)
{
    return FileHandle(fopen(path.c_str(), (mode + "e").c_str()));
}
