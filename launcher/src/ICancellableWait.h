// ICancellableWait: a wait for stop requests that others can wake.
#pragma once

/// What a wait ended with.
enum StopEvent : int {
    kNoStopEvent = 0,  ///< no further event can come
    kSimpleStop = 1,
    kFastStop = 2,
};

class ICancellableWait {
public:
    /// Requests a fast or a simple stop; each kind wakes the waiter once at
    /// most. 0, or -1 with errno when the wake-up failed.
    virtual int signal(bool fast) = 0;
    /// Blocks for the next StopEvent. One thread only.
    virtual int waitForEvent() = 0;
    virtual ~ICancellableWait() = default;
};
