// StopSignals: the signals that ask a launcher to stop, and what keeps them
// from killing it while it is not ready for them.
#pragma once

#include <array>
#include <csignal>

/// SIGUSR1 and SIGINT ask for a simple stop, SIGUSR2 for a fast one.
inline constexpr std::array kStopSignals{SIGUSR1, SIGUSR2, SIGINT};

/// All of them, for a mask.
[[nodiscard]] sigset_t stopSignalSet();

/// Keeps the stop signals pending from hold() to deliver(): between the moment
/// that a launcher can be found by its PID file and the installation of its
/// handlers their default action would kill it. For the main thread, before
/// any other thread exists: threads started meanwhile inherit the mask, so
/// that a signal sent to the process waits for the main thread.
class StopSignalHold final {
public:
    StopSignalHold() = default;
    /// Without deliver(): puts SIGINT's action back as it was. The signals stay
    /// pending, so that a start that has failed can tell why before it ends.
    ~StopSignalHold();
    StopSignalHold(const StopSignalHold&) = delete;
    StopSignalHold& operator=(const StopSignalHold&) = delete;

    /// Blocks the stop signals, and sets SIGINT to be ignored: HotSpot takes
    /// SIGINT for itself unless it is ignored. What is blocked stays pending
    /// even so.
    void hold();
    /// The handlers are installed: unblocks the stop signals, also those that
    /// the process was started with blocked.
    void deliver();

private:
    bool held_ = false;
    struct sigaction interruptBefore_ {};
};
