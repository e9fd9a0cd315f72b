#include "DirHandle.h"

#include <cerrno>

DirHandle::DirHandle(const std::string& path) : stream_(opendir(path.c_str())) {}

const char* DirHandle::nextName()
{
    errno = 0;  // readdir(3) leaves it alone at the end
    const dirent* entry = readdir(stream_.get());
    return entry ? entry->d_name : nullptr;
}
