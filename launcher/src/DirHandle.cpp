#include "DirHandle.h"

#include <cerrno>

DirHandle::DirHandle(const std::string& path) : stream_(opendir(path.c_str())) {}

std::optional<std::string> DirHandle::nextName()
{
    errno = 0;  // readdir(3) leaves it alone at the end
    const dirent* entry = readdir(stream_.get());
    if (!entry) return std::nullopt;
    return entry->d_name;
}
