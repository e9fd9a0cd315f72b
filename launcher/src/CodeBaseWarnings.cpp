#include "CodeBaseWarnings.h"

#include <algorithm>
#include <array>
#include <cwchar>

#include "DirHandle.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "LauncherException.h"
#include "Log.h"
#include "TextConversion.h"

namespace {

constexpr wchar_t kClass[] = L"Daemon";
constexpr std::size_t kMostShown = 3;

std::wstring nameOf(const std::wstring& path)
{
    return path.substr(path.rfind(L'/') + 1);  // npos + 1 is 0
}

bool namesFile(const std::wstring& entry)
{
    try {
        return getOsUtilsFactory().getFileUtils().fileExists(entry);
    } catch (const LauncherException&) {
        return false;  // no name of a file at all, say: too long
    }
}

/// A mask that matches `name` letter by letter: '[.]' is a dot alone. A '*' gets
/// the shortest range around it, since it stays a wildcard in brackets, too.
std::wstring literalMask(const std::wstring& name)
{
    std::wstring mask;
    for (const wchar_t character : name) {
        if (character == L'*') {
            mask += L"[)-+]";
        } else if (character == L'.' || character == L'[') {
            mask.append(L"[").append(1, character).append(L"]");
        } else {
            mask += character;
        }
    }
    return mask;
}

/// Whether the mask takes the file `name` and no other.
bool matchesOnly(const std::wstring& directory, const std::wstring& mask, const std::wstring& name)
{
    try {
        const std::vector<std::wstring> files =
            getOsUtilsFactory().getFileUtils().listFiles(directory, mask);
        return files.size() == 1 && nameOf(files.front()) == name;
    } catch (const LauncherException&) {
        return false;  // no regular expression
    }
}

/// What to write for `entry`, which ends in `name`, to get that file alone.
std::wstring exactEntry(const std::wstring& entry, const std::wstring& directory,
                        const std::wstring& name)
{
    for (const std::wstring& mask : {L"^" + name + L"$", L"^" + literalMask(name) + L"$"}) {
        if (matchesOnly(directory, mask, name)) {
            return entry.substr(0, entry.size() - name.size()) + mask;
        }
    }
    return L"a directory that holds this file alone";
}

bool isArchive(const std::wstring& file)
{
    constexpr std::array kEnds{L".jar", L".zip", L".war"};
    const wchar_t* const end = file.c_str() + std::max<std::size_t>(file.size(), 4) - 4;
    return std::any_of(kEnds.begin(), kEnds.end(),
                       [end](const wchar_t* known) { return wcscasecmp(end, known) == 0; });
}

bool isClass(const std::wstring& file)
{
    return file.ends_with(L".class");
}

bool isEmptyDirectory(const std::wstring& path)
{
    DirHandle entries(toUtf8(path));
    int count = 0;
    while (entries.isOpen() && entries.nextName()) ++count;
    return count <= 2;  // "." and ".."
}

}  // namespace

void warnAboutNeighbors(const std::wstring& entry, const std::wstring& directory,
                        const std::wstring& name, const std::vector<std::wstring>& files)
{
    const bool isExact = files.size() == 1 && nameOf(files.front()) == name;
    if (isExact || !namesFile(entry)) return;
    std::vector<std::wstring> others;
    for (const std::wstring& file : files) {
        if (nameOf(file) != name) others.push_back(nameOf(file));
    }
    const std::size_t count = others.size();
    const wchar_t* const message = count < files.size()
                                       ? L"Path entry also matches other files"
                                       : L"Path entry does not match the file that it names";
    if (count > kMostShown) others.resize(kMostShown);
    logWarn({kClass, L"resolveWildcards"}, message, L"pathMask", entry, L"others", others, L"count",
            count, L"instead", exactEntry(entry, directory, name));
}

void warnAboutDirectory(const std::wstring& entry, const std::vector<std::wstring>& files)
{
    if (std::any_of(files.begin(), files.end(), isArchive)) return;
    if (files.empty() && isEmptyDirectory(entry)) return;
    // The boot loader finds files for all, but its classes see none of the class path.
    const bool mayHoldClasses = files.empty() || std::any_of(files.begin(), files.end(), isClass);
    const IFileUtils& fileUtils = getOsUtilsFactory().getFileUtils();
    logWarn({kClass, L"resolveWildcards"}, L"Class path directory holds no archive", L"pathMask",
            entry, L"instead",
            mayHoldClasses ? L"a jar of it"
                           : L"--jvmopt=-Xbootclasspath/a:" + fileUtils.getAbsolutePath(entry));
}
