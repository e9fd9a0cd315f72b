// IGraalAdapter: a shared library that GraalVM has built from Java code. Its
// functions run in an isolate, a heap of its own; what they return lives as
// long as the isolate.
#pragma once

struct graal_isolatethread_t;  ///< opaque: a thread that is attached to an isolate

class IGraalAdapter {
public:
    /// Loads the library. Throws LauncherException (code 4)
    /// IDS_INVENTORY_LIB_ABSENT, or IDS_INVENTORY_LIB_WRONG when it lacks a
    /// function to make or end isolates.
    virtual void load() = 0;
    /// A function that the library exports. Throws IDS_INVENTORY_LIB_WRONG
    /// (code 4) when there is none. Requires load().
    [[nodiscard]] virtual void* getFunction(const char* name) = 0;
    /// Makes an isolate and attaches the calling thread. The caller hands the
    /// result to tearDownIsolate() on the same thread. Throws
    /// IDS_INVENTORY_GRAAL_INIT_FAIL (code 4). Requires load().
    [[nodiscard]] virtual graal_isolatethread_t* createIsolateAndAttache() = 0;
    /// Ends the isolate; nothing for null. A failure is logged.
    virtual void tearDownIsolate(graal_isolatethread_t* thread) = 0;
    virtual ~IGraalAdapter() = default;
};
