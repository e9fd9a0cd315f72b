// LinuxService: runs one service object in this process, detached from the
// terminal if asked to, and passes its reports on to the service manager, where
// there is one. start() is for the main thread, once; stop() and the reports may
// come from others.
#pragma once

#include <atomic>

#include "Detachment.h"
#include "IService.h"
#include "ServiceManager.h"

class IServiceObject;

class LinuxService final : public IService {
public:
    enum State : int { kCreated = 0, kRunning = 1, kStopping = 2, kStopped = 3 };

    /// `serviceObject` is on loan and must outlive the runner; `daemonize`
    /// makes start() detach.
    LinuxService(IServiceObject& serviceObject, bool daemonize);
    LinuxService(const LinuxService&) = delete;
    LinuxService& operator=(const LinuxService&) = delete;

    /// Makes this the process's current service, the one that init() starts.
    /// It stays registered until its end.
    void registerAsCurrent();

    /// start() of the current service.
    int init() override;
    void reportStartPending(std::uint32_t waitHintMs) override;
    void reportRunning() override;
    void reportStopPending(std::uint32_t waitHintMs) override;
    void reportStopped() override;
    ~LinuxService() override;
    [[nodiscard]] bool isDaemon() const override { return isDaemon_; }
    void releaseCaller() override { detachment_.release(); }
    void reportStatus(const std::wstring& status) override;
    [[nodiscard]] bool isAwaited() const override { return serviceManager_.awaitsReadiness(); }

    /// Runs the service object to its end and gives its result; 21 when it was
    /// started before, 20 when the process cannot be detached. A
    /// LauncherException of the service object goes on to the caller.
    int start();
    /// Asks the service object to stop and waits until it has.
    void stop();
    [[nodiscard]] State state() const;

private:
    [[nodiscard]] bool detach();
    int runServiceObject();

    IServiceObject& serviceObject_;
    std::atomic<int> state_{kCreated};
    bool isDaemon_;
    Detachment detachment_;
    ServiceManager serviceManager_;
};
