#include "JavaFinder.h"

#include <utility>

#include "IInventory.h"
#include "IJavaChecker.h"
#include "IProcessUtils.h"
#include "Log.h"

namespace {

constexpr wchar_t kClass[] = L"InventoryAndEnvJavaFinder";

}  // namespace

JavaFinderResult InventoryAndEnvJavaFinder::find(std::int32_t minimalJavaVersion)
{
    inventory_.initialize();
    // Written also after a failure, which getErrors() tells; required.
    logInfo({kClass, L"find"}, L"Inventory library is initialised successfully.");
    errors_ = inventory_.getLastError();
    if (!errors_.empty()) return {};

    std::wstring path = inventory_.readPathToJavaComponent(minimalJavaVersion, errorConsumer_);
    errors_ = inventory_.getLastError();
    if (!path.empty()) return {std::move(path), false};
    return findInEnvironment(minimalJavaVersion);
}

JavaFinderResult InventoryAndEnvJavaFinder::findInEnvironment(std::int32_t minimalJavaVersion) const
{
    std::wstring javaHome = processUtils_.getEnvironmentVariable(L"JAVA_HOME");
    if (javaHome.empty()) {
        logInfo({kClass, L"find"}, L"JAVA_HOME environment variable is empty.");
        return {};
    }
    logInfo({kClass, L"find"}, L"JAVA_HOME environment variable.", L"path", javaHome);
    if (!checker_.check(javaHome, minimalJavaVersion)) return {};
    logInfo({kClass, L"find"}, L"Java from JAVA_HOME environment variable suites a product.",
            L"path", javaHome);
    return {std::move(javaHome), true};
}
