// GraalAdapter: owner of the loaded library. At its end logs whether isolates
// are left, unloads the library and logs that, also where none was loaded. For
// the main thread.
#pragma once

#include <memory>
#include <string>

#include "IGraalAdapter.h"

class ILibraryHandle;
class ISystemUtils;

// Opaque types of the GraalVM C API.
struct graal_create_isolate_params_t;
struct graal_isolate_t;

class GraalAdapter final : public IGraalAdapter {
public:
    /// `systemUtils` must outlive the adapter.
    GraalAdapter(std::wstring libraryPath, const ISystemUtils& systemUtils);
    ~GraalAdapter() override;
    GraalAdapter(const GraalAdapter&) = delete;
    GraalAdapter& operator=(const GraalAdapter&) = delete;

    void load() override;
    [[nodiscard]] void* getFunction(const char* name) override;
    [[nodiscard]] graal_isolatethread_t* createIsolateAndAttache() override;
    void tearDownIsolate(graal_isolatethread_t* thread) override;

private:
    // Both give 0 on success.
    using CreateFunction = int (*)(graal_create_isolate_params_t*, graal_isolate_t**,
                                   graal_isolatethread_t**);
    using TearDownFunction = int (*)(graal_isolatethread_t*);

    const std::wstring libraryPath_;
    const ISystemUtils& systemUtils_;
    std::shared_ptr<ILibraryHandle> library_;  ///< null before load()
    CreateFunction create_ = nullptr;
    TearDownFunction tearDown_ = nullptr;
    int createdIsolatesCounter_ = 0;  ///< isolates that live
};
