#include "GraalAdapter.h"

#include <utility>

#include "ILibraryHandle.h"
#include "ISystemUtils.h"
#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

namespace {

constexpr wchar_t kClass[] = L"GraalAdapter";

}  // namespace

GraalAdapter::GraalAdapter(std::wstring libraryPath, const ISystemUtils& systemUtils)
    : libraryPath_(std::move(libraryPath)), systemUtils_(systemUtils)
{
}

GraalAdapter::~GraalAdapter()
{
    if (createdIsolatesCounter_ != 0) {
        logError({kClass, L"~GraalAdapter"}, L"Inconsistent Graal isolates count",
                 L"createdIsolatesCounter", createdIsolatesCounter_);
    }
    if (library_) library_->close();
    logInfo({kClass, L"~GraalAdapter"}, L"Inventory library unloaded");  // always; required
}

void GraalAdapter::load()
{
    library_ = systemUtils_.loadLibrary(libraryPath_);
    if (library_->isEmpty()) {
        throw LauncherException(
            exit_code::kJavaLocation,
            formatMessage(IDS_INVENTORY_LIB_ABSENT, libraryPath_, library_->getErrorText()));
    }
    create_ = reinterpret_cast<CreateFunction>(getFunction("graal_create_isolate"));
    tearDown_ = reinterpret_cast<TearDownFunction>(getFunction("graal_tear_down_isolate"));
}

void* GraalAdapter::getFunction(const char* name)
{
    void* const function = library_->getSymbol(name);
    if (function) return function;
    throw LauncherException(exit_code::kJavaLocation,
                            formatMessage(IDS_INVENTORY_LIB_WRONG, libraryPath_, toWide(name)));
}

graal_isolatethread_t* GraalAdapter::createIsolateAndAttache()
{
    graal_isolate_t* isolate = nullptr;
    graal_isolatethread_t* thread = nullptr;
    getLogger().flush();  // Java code may end the process
    const int code = create_(nullptr, &isolate, &thread);
    if (code != 0) {
        logError({kClass, L"createIsolateAndAttache"},
                 L"Cannot initialize Graal VM. Code " + toWString(static_cast<long>(code)) + L".");
        throw LauncherException(exit_code::kJavaLocation,
                                formatMessage(IDS_INVENTORY_GRAAL_INIT_FAIL, code));
    }
    ++createdIsolatesCounter_;
    return thread;
}

void GraalAdapter::tearDownIsolate(graal_isolatethread_t* thread)
{
    if (!thread || !tearDown_) return;
    --createdIsolatesCounter_;
    logInfo({kClass, L"tearDownIsolate"}, L"Uninitializing VM library");
    getLogger().flush();
    const int code = tearDown_(thread);
    if (code != 0) {
        logError({kClass, L"tearDownIsolate"}, L"Cannot uninitialize VM library", L"code", code);
    }
    logInfo({kClass, L"tearDownIsolate"}, L"VM library uninitialized");
}
