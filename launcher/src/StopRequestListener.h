// StopRequestListener: the way to the process's current stop listener, which
// a signal handler cannot be given as an object. The proxy holds no data.
#pragma once

#include <cstdint>
#include <memory>

#include "ICancellableWait.h"

class StopRequestListener final : public ICancellableWait {
public:
    StopRequestListener() = default;
    /// Withdraws the current listener and destroys it, once no other thread
    /// or signal handler is using it.
    ~StopRequestListener() override;
    StopRequestListener(const StopRequestListener&) = delete;
    StopRequestListener& operator=(const StopRequestListener&) = delete;

    /// As postStopRequest().
    int signal(bool fast) override;
    /// The current listener's wait; kNoStopEvent when there is none. On the
    /// thread that destroys the proxy.
    int waitForEvent() override;
};

/// Makes a LinuxStopRequestListener, which takes over the stop signals, the
/// current one. `pid` is not used. Throws as its constructor does.
[[nodiscard]] std::shared_ptr<StopRequestListener> createStopRequestListener(std::int32_t pid);

/// Requests a stop of the current listener; 0 when there is none. From any
/// thread; async-signal-safe.
int postStopRequest(bool fast);

/// The same for the handler of a stop signal.
int postStopSignal(bool fast);

/// Tells the current listener that the application has ended by itself: a
/// simple stop that wakes the waiter also when one was requested before. From
/// any thread.
void postApplicationEnd();
