// FileHandle: sole owner of an open stdio stream.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "FileDescriptor.h"

struct FileCloser {
    void operator()(FILE* stream) const { fclose(stream); }
};

using FileHandle = std::unique_ptr<FILE, FileCloser>;

/// A stream for `file`, which it owns then; null, with errno, on failure and for
/// no file.
[[nodiscard]] inline FileHandle toStream(FileDescriptor file, const char* mode)
{
    FileHandle stream(file.isOpen() ? fdopen(file.get(), mode) : nullptr);
    if (stream) static_cast<void>(file.release());
    return stream;
}

/// Opens `path` (UTF-8) as fopen(3) does; the descriptor does not leak into
/// child processes. Null with errno on failure.
[[nodiscard]] inline FileHandle openFile(const std::string& path, const std::string& mode)
{
    return FileHandle(fopen(path.c_str(), (mode + "e").c_str()));
}
