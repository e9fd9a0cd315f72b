// ServiceManager: the service manager, such as systemd, that has started this
// process, told of the service by the protocol of sd_notify(3). Does nothing
// where nobody wants to be told: where NOTIFY_SOCKET is not in the environment.
// From any thread.
#pragma once

#include <atomic>
#include <string>

class ServiceManager final {
public:
    /// Reads the environment. NOTIFY_SOCKET is the socket's path or, behind an
    /// '@', its abstract name. LAUNCHER_READY=service: the service itself says
    /// when it is ready; any other value is logged as a warning.
    ServiceManager();

    /// True when it is up to us to say that the service is ready.
    [[nodiscard]] bool awaitsReadiness() const { return awaitsReadiness_; }

    /// Sends one message of lines such as "READY=1". Waits for 5 s at most, up to
    /// 10 s where signals come in meanwhile, and not at all after a message that
    /// could not be sent; the first such one is logged as a warning.
    void tell(const std::string& message);

private:
    std::string address_;
    bool awaitsReadiness_ = false;
    std::atomic<bool> hasFailed_{false};  ///< publishes nothing
};
