#include "Inventory.h"

#include <memory>

#include "IGraalAdapter.h"
#include "IInventoryErrorConsumer.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "LauncherException.h"
#include "Log.h"
#include "TextConversion.h"

namespace {

constexpr wchar_t kClass[] = L"Inventory";
constexpr wchar_t kRead[] = L"readPathToJavaComponent";

struct IsolateCloser {
    IGraalAdapter* adapter = nullptr;
    void operator()(graal_isolatethread_t* thread) const { adapter->tearDownIsolate(thread); }
};
/// Owns an isolate with the calling thread attached to it.
using Isolate = std::unique_ptr<graal_isolatethread_t, IsolateCloser>;

/// Null when none can be made, which is logged.
Isolate createIsolate(IGraalAdapter& adapter)
{
    try {
        Isolate isolate(adapter.createIsolateAndAttache(), IsolateCloser{&adapter});
        logInfo({kClass, kRead}, L"Isolate created");
        return isolate;
    } catch (const LauncherException& e) {
        logError({kClass, kRead}, L"Cannot find Java in Inventory. Isolate creation error",
                 L"error", e.message());
        return {};
    }
}

}  // namespace

void Inventory::initialize()
{
    lastError_.clear();
    try {
        adapter_.load();
        findJavaComponent_ =
            reinterpret_cast<FindFunction>(adapter_.getFunction("findJavaComponent"));
        readLastError_ = reinterpret_cast<LastErrorFunction>(adapter_.getFunction("getLastError"));
    } catch (const LauncherException& e) {
        lastError_ = e.message();
    }
}

std::wstring Inventory::readPathToJavaComponent(std::int32_t minimalJavaVersion,
                                                IInventoryErrorConsumer& errorConsumer)
{
    lastError_.clear();
    const Isolate isolate = createIsolate(adapter_);
    if (!isolate) return {};
    std::wstring path = findPath(isolate.get(), minimalJavaVersion);
    takeLastError(isolate.get(), errorConsumer);
    if (path.empty()) {
        logInfo({kClass, kRead}, L"Cannot find Java in Inventory.");
    } else {
        logInfo({kClass, kRead}, L"Launcher have found Java in Inventory.", L"path", path);
    }
    return path;
}

std::wstring Inventory::findPath(graal_isolatethread_t* thread,
                                 std::int32_t minimalJavaVersion) const
{
    const std::string launcher = toUtf8(osUtilsFactory_.getProcessUtils().getExecutablePath());
    getLogger().flush();  // Java code may end the process
    return toWide(
        findJavaComponent_(thread, minimalJavaVersion, "x86_64", launcher.c_str(), nullptr));
}

void Inventory::takeLastError(graal_isolatethread_t* thread, IInventoryErrorConsumer& errorConsumer)
{
    const char* const error = readLastError_(thread);
    lastError_ = toWide(error);
    if (!error) return;
    logError({kClass, kRead}, L"Cannot find Java in Inventory. findJavaComponentFunc failed",
             L"error", lastError_);
    errorConsumer.consume(error);
}
