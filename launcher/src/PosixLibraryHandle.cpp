#include "PosixLibraryHandle.h"

#include <dlfcn.h>

#include <utility>

#include "TextConversion.h"

PosixLibraryHandle::PosixLibraryHandle(const std::wstring& path)
    : library_(dlopen(toUtf8(path).c_str(), RTLD_NOW | RTLD_GLOBAL))
{
    if (!library_) errorText_ = toWide(dlerror());
}

void* PosixLibraryHandle::getSymbol(const char* name)
{
    if (!library_) return nullptr;
    dlerror();  // what an earlier call left
    void* const symbol = dlsym(library_, name);
    return dlerror() ? nullptr : symbol;
}

bool PosixLibraryHandle::close()
{
    void* const library = std::exchange(library_, nullptr);
    return !library || dlclose(library) == 0;
}

PosixLibraryHandle::~PosixLibraryHandle()
{
    if (library_) dlclose(library_);
}
