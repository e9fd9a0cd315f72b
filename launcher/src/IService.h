// IService: how a service object sees the runner that runs it.
#pragma once

#include <cstdint>
#include <string>

class IService {
public:
    /// Runs the current service in this process; gives its exit status.
    virtual int init() = 0;
    virtual void reportStartPending(std::uint32_t waitHintMs) = 0;
    virtual void reportRunning() = 0;
    virtual void reportStopPending(std::uint32_t waitHintMs) = 0;
    virtual void reportStopped() = 0;
    virtual ~IService() = default;
    /// True when the launcher detaches from the terminal.
    [[nodiscard]] virtual bool isDaemon() const = 0;
    /// The PID file is there, or there will be none: lets whoever has run a
    /// detached launcher go on.
    virtual void releaseCaller() {}
    /// What the process is at, for whoever watches the service: a line in English.
    virtual void reportStatus(const std::wstring& /*status*/) {}
    /// True when a service manager waits for reportRunning().
    [[nodiscard]] virtual bool isAwaited() const { return false; }
};
