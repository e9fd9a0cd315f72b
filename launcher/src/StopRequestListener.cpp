#include "StopRequestListener.h"

#include <sched.h>

#include <atomic>

#include "LinuxStopRequestListener.h"

namespace {

// Published with its semaphore ready.
std::atomic<LinuxStopRequestListener*> currentListener{nullptr};
// How many threads and signal handlers are using it.
std::atomic<int> listenerUsers{0};

/// Calls `use` with the current listener, which lives until that is done.
/// Sequentially consistent, so that either the user finds the listener
/// withdrawn or the proxy finds the user.
template <typename Use>
int withCurrentListener(Use use)
{
    listenerUsers.fetch_add(1);
    LinuxStopRequestListener* listener = currentListener.load();
    const int result = listener ? use(*listener) : 0;
    listenerUsers.fetch_sub(1);
    return result;
}

}  // namespace

StopRequestListener::~StopRequestListener()
{
    const std::unique_ptr<LinuxStopRequestListener> listener(currentListener.exchange(nullptr));
    // A user flips a flag and posts a semaphore, after some milliseconds at most.
    while (listenerUsers.load() != 0) sched_yield();
}

int StopRequestListener::signal(bool fast)
{
    return postStopRequest(fast);
}

int StopRequestListener::waitForEvent()
{
    LinuxStopRequestListener* listener = currentListener.load(std::memory_order_acquire);
    return listener ? listener->waitForEvent() : kNoStopEvent;
}

std::shared_ptr<StopRequestListener> createStopRequestListener(std::int32_t)
{
    auto listener = std::make_unique<LinuxStopRequestListener>();
    auto proxy = std::make_shared<StopRequestListener>();
    currentListener.store(listener.release(), std::memory_order_release);
    LinuxStopRequestListener::takeSignals();
    return proxy;
}

int postStopRequest(bool fast)
{
    return withCurrentListener(
        [fast](LinuxStopRequestListener& listener) { return listener.signal(fast); });
}

int postStopSignal(bool fast)
{
    return withCurrentListener(
        [fast](LinuxStopRequestListener& listener) { return listener.signalFromHandler(fast); });
}

void postApplicationEnd()
{
    withCurrentListener([](LinuxStopRequestListener& listener) { return listener.signalEnd(); });
}
