#include "LinuxSystemUtils.h"

#include <clocale>

#include "LastErrorText.h"
#include "LocalTimeText.h"
#include "PosixLibraryHandle.h"
#include "TextConversion.h"

namespace {

/// The environment's locale up to the first of `ends`; `fallback` when it is
/// none. Sets the process's LC_CTYPE from the environment.
std::wstring environmentLocale(const wchar_t* ends, const wchar_t* fallback)
{
    const std::wstring name = toWide(std::setlocale(LC_CTYPE, ""));
    if (name.empty() || name == L"C" || name == L"POSIX") return fallback;
    return name.substr(0, name.find_first_of(ends));
}

}  // namespace

std::wstring LinuxSystemUtils::getCurrentTimeText() const
{
    std::string text;
    appendLocalTime(text);
    return toWide(text);
}

std::wstring LinuxSystemUtils::getLastErrorText() const
{
    return lastErrorText();
}

std::wstring LinuxSystemUtils::getLocaleName() const
{
    return environmentLocale(L".@", L"en_US");
}

std::wstring LinuxSystemUtils::getLanguageName() const
{
    return environmentLocale(L"_.@", L"en");
}

std::shared_ptr<ILibraryHandle> LinuxSystemUtils::loadLibrary(const std::wstring& path) const
{
    return std::make_shared<PosixLibraryHandle>(path);
}

std::shared_ptr<ILibraryHandle> LinuxSystemUtils::loadLibrary(const std::wstring& path, int) const
{
    return loadLibrary(path);
}
