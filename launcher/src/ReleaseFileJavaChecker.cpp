#include "ReleaseFileJavaChecker.h"

#include <string_view>

#include "FileContent.h"
#include "IFileUtils.h"
#include "JavaVersion.h"
#include "LauncherException.h"
#include "Log.h"
#include "TextLines.h"

namespace {

constexpr std::wstring_view kArchKey = L"OS_ARCH=";
constexpr std::wstring_view kVersionKey = L"JAVA_VERSION=";

/// True when the line begins with `key` and holds it only there.
bool hasKey(std::wstring_view line, std::wstring_view key)
{
    return line.starts_with(key) && line.rfind(key) == 0;
}

/// The feature version in a value that is quoted or not; -1 when it tells none.
std::int32_t featureVersion(std::wstring_view value)
{
    const bool quoted = value.size() >= 2 && value.starts_with(L'"') && value.ends_with(L'"');
    if (quoted) value = value.substr(1, value.size() - 2);
    return parseJavaVersion(value).value_or(-1);
}

bool suits(std::string_view releaseFile, std::int32_t minimalJavaVersion)
{
    bool archSeen = false;
    bool versionSeen = false;
    TextLines lines(releaseFile);
    while (const auto line = lines.next()) {
        if (hasKey(*line, kArchKey)) {
            archSeen = true;
            if (line->find(L"64") == std::wstring_view::npos) return false;
        } else if (hasKey(*line, kVersionKey)) {
            versionSeen = true;
            const std::wstring_view value = line->substr(kVersionKey.size());
            if (minimalJavaVersion > featureVersion(value)) return false;
        }
    }
    return archSeen && versionSeen;
}

}  // namespace

bool ReleaseFileJavaChecker::check(const std::wstring& javaHome,
                                   std::int32_t minimalJavaVersion) const
{
    const std::wstring file = javaHome + L"/release";
    try {
        if (!fileUtils_.fileExists(file)) return false;
        return suits(fileUtils_.readFile(file)->view(), minimalJavaVersion);
    } catch (const LauncherException& e) {
        logWarn({L"ReleaseFileJavaChecker", L"check"}, L"Cannot read release file", L"exception",
                e.message());
        return false;
    }
}
