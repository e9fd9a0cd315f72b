#include "CodeBaseOptions.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "CodeBaseWarnings.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "LauncherException.h"
#include "LauncherParameters.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"

namespace {

constexpr wchar_t kClass[] = L"Daemon";
constexpr wchar_t kModulePathOption[] = L"--module-path=";

IFileUtils& fileUtils()
{
    return getOsUtilsFactory().getFileUtils();
}

/// The entries of a path list, empty ones included; none for an empty list.
std::vector<std::wstring> splitPathList(std::wstring_view pathList)
{
    std::vector<std::wstring> entries;
    if (pathList.empty()) return entries;
    const wchar_t separator = fileUtils().getPathListSeparator();
    for (;;) {
        const std::size_t end = pathList.find(separator);
        entries.emplace_back(pathList.substr(0, end));
        if (end == std::wstring_view::npos) return entries;
        pathList.remove_prefix(end + 1);
    }
}

/// An entry with '/' for every '\\' and without a '/' at its end.
std::wstring normalizeEntry(std::wstring entry)
{
    std::replace(entry.begin(), entry.end(), L'\\', L'/');
    if (entry.size() > 1 && entry.back() == L'/') entry.pop_back();
    return entry;
}

/// A directory, and the mask for the files in it; an empty mask takes all.
struct FileMask {
    std::wstring directory;
    std::wstring mask;
};

FileMask splitEntry(const std::wstring& entry)
{
    const std::size_t lastSlash = entry.rfind(L'/');
    const std::size_t wildcard = entry.find_first_of(L"*?");
    const bool hasSlash = lastSlash != std::wstring::npos;
    if (hasSlash && wildcard < lastSlash) {
        throw LauncherException(exit_code::kConfiguration,
                                formatMessage(IDS_WILDCARDS_ONLY_FOR_FILES, entry));
    }
    if (fileUtils().isDirectory(entry)) return {entry, L""};
    if (!hasSlash) return {L".", entry};
    // The directory of "/name" is the root, though nothing stands before its '/'.
    return {lastSlash == 0 ? L"/" : entry.substr(0, lastSlash), entry.substr(lastSlash + 1)};
}

/// A path list while it is written, behind the option that it belongs to.
class PathList final {
public:
    explicit PathList(const wchar_t* option) : text_(option), optionSize_(text_.size()) {}

    [[nodiscard]] bool isEmpty() const { return text_.size() == optionSize_; }
    [[nodiscard]] bool isOfModules() const { return text_.starts_with(kModulePathOption); }
    /// Makes room at once: there may be thousands of long paths.
    void reserveFor(const std::vector<std::wstring>& files)
    {
        std::size_t size = text_.size();
        for (const std::wstring& file : files) size += 1 + file.size();
        text_.reserve(size);
    }
    void add(const std::wstring& file)
    {
        if (!isEmpty()) text_ += fileUtils().getPathListSeparator();
        text_ += file;
    }
    [[nodiscard]] std::wstring take() { return std::move(text_); }

private:
    std::wstring text_;
    std::size_t optionSize_;
};

std::vector<std::wstring> listMatches(const std::wstring& entry, const FileMask& fileMask)
{
    try {
        return fileUtils().listFiles(fileMask.directory, fileMask.mask);
    } catch (const LauncherException&) {  // a '[' in the name of a file is no mask, say
        warnAboutNeighbors(entry, fileMask.directory, fileMask.mask, {});
        throw;
    }
}

/// Appends the files that match the entry to `result`.
void resolveEntry(const std::wstring& rawEntry, PathList& result)
{
    if (rawEntry.empty()) {
        logWarn({kClass, L"resolveWildcards"}, L"Skipping empty file mask");
        return;
    }
    logInfo({kClass, L"resolveWildcards"}, L"Java code base path wildcards", L"pathMask", rawEntry);
    const std::wstring entry = normalizeEntry(rawEntry);
    const FileMask fileMask = splitEntry(entry);
    if (!fileUtils().fileExists(fileMask.directory)) {
        logInfo({kClass, L"resolveWildcards"}, L"Directory for pattern does not exist");
        return;
    }
    const std::vector<std::wstring> files = listMatches(entry, fileMask);
    if (files.empty()) {
        logInfo({kClass, L"resolveWildcards"}, L"The mask does not match any file in the directory",
                L"mask", fileMask.mask);
    }
    result.reserveFor(files);
    for (const std::wstring& file : files) {
        logInfo({kClass, L"resolveWildcards"}, L"File matched", L"filename", file);
        result.add(file);
    }
    if (!fileMask.mask.empty()) {
        warnAboutNeighbors(entry, fileMask.directory, fileMask.mask, files);
    } else if (!result.isOfModules()) {
        warnAboutDirectory(entry, files);
    }
}

void resolvePathList(const std::wstring& pathList, PathList& result)
{
    const std::vector<std::wstring> entries = splitPathList(pathList);
    if (entries.empty()) return;
    logInfo({kClass, L"resolveWildcards"}, L"Java code base path wildcards to resolve",
            L"pathMasks", entries);
    for (const std::wstring& entry : entries) resolveEntry(entry, result);
}

/// Adds `option` with the files of `pathList`, if that is set.
void addPathOption(const std::wstring& pathList, const wchar_t* option, const char* nothingFoundId,
                   std::vector<std::wstring>& options)
{
    if (pathList.empty()) return;
    PathList files(option);
    resolvePathList(pathList, files);
    if (files.isEmpty()) {
        throw LauncherException(exit_code::kConfiguration, formatMessage(nothingFoundId, pathList));
    }
    options.push_back(files.take());
}

}  // namespace

std::vector<std::wstring> composeJvmOptions(const LauncherParameters& parameters)
{
    std::vector<std::wstring> options;
    try {
        addPathOption(parameters.getModulePath(), kModulePathOption, IDS_CANNOT_FIND_MODULE_PATH,
                      options);
        addPathOption(parameters.getClassPath(), L"-Djava.class.path=", IDS_CANNOT_FIND_CLASS_PATH,
                      options);
    } catch (const LauncherException& e) {
        throw LauncherException(exit_code::kConfiguration, e.message());
    }
    const std::vector<std::wstring>& more = parameters.getJvmOptions();
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

std::wstring resolveWildcards(const std::wstring& pathList)
{
    PathList files(L"");
    resolvePathList(pathList, files);
    return files.take();
}
