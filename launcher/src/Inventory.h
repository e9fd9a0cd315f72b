// Inventory: asks the inventory library, each time in an isolate of its own.
// For the main thread.
#pragma once

#include <cstdint>
#include <string>

#include "IInventory.h"

class IGraalAdapter;
class IOsUtilsFactory;
struct graal_isolatethread_t;

class Inventory final : public IInventory {
public:
    /// Both must outlive the inventory.
    Inventory(IGraalAdapter& adapter, IOsUtilsFactory& osUtilsFactory)
        : adapter_(adapter), osUtilsFactory_(osUtilsFactory)
    {
    }

    void initialize() override;
    /// A failure to make the isolate is only logged: it does not become the
    /// last error, so that the search goes on elsewhere.
    [[nodiscard]] std::wstring readPathToJavaComponent(
        std::int32_t minimalJavaVersion, IInventoryErrorConsumer& errorConsumer) override;
    [[nodiscard]] const std::wstring& getLastError() const override { return lastError_; }

private:
    // Texts are UTF-8; what is returned may be null and belongs to the isolate.
    using FindFunction = const char* (*)(graal_isolatethread_t*, std::int32_t minimalJavaVersion,
                                         const char* arch, const char* launcherPath,
                                         void* reserved);
    using LastErrorFunction = const char* (*)(graal_isolatethread_t*);

    [[nodiscard]] std::wstring findPath(graal_isolatethread_t* thread,
                                        std::int32_t minimalJavaVersion) const;
    void takeLastError(graal_isolatethread_t* thread, IInventoryErrorConsumer& errorConsumer);

    IGraalAdapter& adapter_;
    IOsUtilsFactory& osUtilsFactory_;
    FindFunction findJavaComponent_ = nullptr;
    LastErrorFunction readLastError_ = nullptr;
    std::wstring lastError_;
};
