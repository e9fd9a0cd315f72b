// ServiceManager: whoever has started this process as a service and wants to
// hear of it, systemd for one, by the protocol of sd_notify(3). Where nobody
// does (there is no NOTIFY_SOCKET in the environment), nothing happens here.
// From any thread.
#pragma once

#include <atomic>
#include <string>

class ServiceManager final {
public:
    /// Reads the environment. NOTIFY_SOCKET is the socket's path or, behind an
    /// '@', its abstract name. LAUNCHER_READY=service: the service itself tells
    /// when it is ready; anything else there is logged as a warning.
    ServiceManager();

    /// True when it wants to be told by us that the service is ready.
    [[nodiscard]] bool awaitsReadiness() const { return awaitsReadiness_; }

    /// Sends one message of lines such as "READY=1"; waits for 5 s at most. The
    /// first failure is logged as a warning, and nothing is sent after it.
    void tell(const std::string& message);

private:
    std::string address_;
    bool awaitsReadiness_ = false;
    std::atomic<bool> isListening_{false};  ///< guards nothing
};
