// LinuxStopRequestListener: turns SIGUSR1 and SIGINT (simple stop) and
// SIGUSR2 (fast stop), and requests from inside the process, into events for
// one waiting thread. The signal handlers stay installed after its end.
#pragma once

#include <semaphore.h>

#include <atomic>

#include "ICancellableWait.h"
#include "StopSignalLog.h"

class LinuxStopRequestListener final : public ICancellableWait {
public:
    /// Throws LauncherException IDS_CANNOT_START_WAITING_FOR_STOP_SIGNAL (code 20).
    LinuxStopRequestListener();
    ~LinuxStopRequestListener() override;
    LinuxStopRequestListener(const LinuxStopRequestListener&) = delete;
    LinuxStopRequestListener& operator=(const LinuxStopRequestListener&) = delete;

    /// Installs the handlers, which need the current listener: without one they
    /// would lose the signal. Throws as the constructor does.
    static void takeSignals();

    /// Async-signal-safe.
    int signal(bool fast) override;
    /// The same for the handler of a stop signal, which the first fast request
    /// keeps for 10 ms, so that a simple one before it is not overtaken.
    int signalFromHandler(bool fast);
    /// A simple stop that always wakes the waiter. Async-signal-safe.
    int signalEnd();
    /// Gives each kind of stop once, the one that was requested first before
    /// the other; kNoStopEvent at once when both were given. A wait that
    /// something else ends counts as a simple stop.
    int waitForEvent() override;

private:
    /// Notes the first kind that is requested.
    void noteRequest(StopEvent kind);
    [[nodiscard]] StopEvent takeEvent();

    StopSignalLog signalLog_;  ///< first in, last out: the handlers use it
    sem_t semaphore_;
    std::atomic<bool> fastStopRequested_{false};
    std::atomic<bool> simpleStopRequested_{false};
    std::atomic<int> firstRequest_{kNoStopEvent};
    // The waiting thread's own.
    bool fastStopGiven_ = false;
    bool simpleStopGiven_ = false;
};
