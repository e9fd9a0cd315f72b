// StopSignals: the signals that ask a launcher to stop, and what keeps them
// from killing it while it is not ready for them.
#pragma once

#include <array>
#include <csignal>

/// SIGUSR1 and SIGINT ask for a simple stop, SIGUSR2 for a fast one.
inline constexpr std::array kStopSignals{SIGUSR1, SIGUSR2, SIGINT};

/// All of them, for a mask.
[[nodiscard]] sigset_t stopSignalSet();

/// All signals, for a mask, but those of a fault of the thread itself, which cannot be
/// kept off: blocked, they end the process without a word of the JVM's.
[[nodiscard]] sigset_t allSignalsButFaults();

/// Keeps SIGINT pending from hold() to deliver(), while the JVM is created: HotSpot
/// takes it for itself unless it is ignored, and what is ignored stays pending only
/// where it is blocked. Processes that are started meanwhile ignore it for good, and the
/// threads that the JVM makes meanwhile inherit the mask: no other signal is blocked.
/// For the main thread.
class InterruptHold final {
public:
    InterruptHold() = default;
    /// Without deliver(): puts SIGINT's action back as it was. The signal stays
    /// pending, so that a start that has failed can tell why before it ends.
    ~InterruptHold();
    InterruptHold(const InterruptHold&) = delete;
    InterruptHold& operator=(const InterruptHold&) = delete;

    /// Also unblocks the other stop signals, which the process may have been started
    /// with blocked: their handlers are installed.
    void hold();
    /// Unblocks SIGINT, for the action that it had.
    void deliver();

private:
    bool held_ = false;
    struct sigaction interruptBefore_ {};
};
