#include "JavaLibResolver.h"

#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "LauncherException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"

namespace {

/// Below the Java home, in the order of the search.
constexpr const wchar_t* kDirectories[] = {
    L"jre/lib/amd64/server/",  // JDK up to 8
    L"lib/amd64/server/",      // JRE up to 8
    L"lib/server/",
};

bool endsInSeparator(const std::wstring& path)
{
    return path.ends_with(L'/') || path.ends_with(L'\\');
}

}  // namespace

std::wstring JavaLibResolver::resolve(const std::wstring& javaHome) const
{
    const IFileUtils& files = getOsUtilsFactory().getFileUtils();
    std::wstring root = javaHome;
    if (!endsInSeparator(root)) root += files.getDirectorySeparator();
    for (const wchar_t* directory : kDirectories) {
        std::wstring candidate = root + directory + L"libjvm.so";
        if (files.fileExists(candidate)) return candidate;
    }
    throw LauncherException(exit_code::kJavaLocation, getMessage(IDS_CANNOT_FIND_JVMLIB));
}
