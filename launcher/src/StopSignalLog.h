// StopSignalLog: writes a record for every stop signal that rises. A signal
// handler must not log, since the log takes a lock that the interrupted thread
// may hold: the handler counts, and a thread of the StopSignalLog writes. The
// counts are the process's, so that signals are counted before, between and
// after the lives of the objects, too. At most one object at a time.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

class StopSignalLog final {
public:
    /// Starts the thread; it takes no signals. Throws LauncherException
    /// IDS_CANNOT_START_WAITING_FOR_STOP_SIGNAL (code 20) when it cannot.
    StopSignalLog();
    /// Ends the thread, after it has written what was counted.
    ~StopSignalLog();
    StopSignalLog(const StopSignalLog&) = delete;
    StopSignalLog& operator=(const StopSignalLog&) = delete;

    /// Counts one rise of a stop signal. Async-signal-safe; changes errno.
    static void count(int signalNumber) noexcept;

    /// Writes on the calling thread what was counted and not yet written, and
    /// waits for what another thread is writing, `patience` at the most.
    static void drain(std::chrono::milliseconds patience = kPatience);

private:
    static constexpr std::chrono::milliseconds kPatience{1000};

    void writeUntilStopped();

    std::atomic<bool> stopped_{false};
    std::thread writer_;
};
