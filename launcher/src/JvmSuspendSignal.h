// JvmSuspendSignal: for its scope, the environment makes HotSpot suspend its
// threads with a signal other than SIGUSR2, which is the launcher's fast stop.
// HotSpot reads _JAVA_SR_SIGNUM while a JVM is created; outside of that the
// variable stays as the launcher found it, so that no child process of the
// service inherits it. For the main thread, while no other thread reads the
// environment: that of StopSignalLog does not.
#pragma once

#include <optional>
#include <string>

class JvmSuspendSignal final {
public:
    /// Sets the variable unless it names a usable signal already.
    JvmSuspendSignal();
    /// Puts back what was there.
    ~JvmSuspendSignal();
    JvmSuspendSignal(const JvmSuspendSignal&) = delete;
    JvmSuspendSignal& operator=(const JvmSuspendSignal&) = delete;

private:
    std::optional<std::string> before_;
};
