// Daemon: the service object of start mode. Runs one Java application in a
// JVM of this process, from the PID file to the end of its start method, and
// its stop method on the first stop event that it can serve. run() is for the
// main thread, stop() for any other. At most one per process, as its JVM.
#pragma once

#include <atomic>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "IServiceObject.h"
#include "JavaVmManager.h"
#include "PidFile.h"
#include "StopSignals.h"

class ICancellableWait;
class IConsole;
class LauncherParameters;

class Daemon final : public IServiceObject {
public:
    /// `console` must outlive the object.
    Daemon(std::shared_ptr<const LauncherParameters> parameters, IConsole& console);

    /// Writes the header to the console; nothing when detached or quiet.
    void printStartupHeader(IService& service) override;
    /// Gives the exit base: 0, or when detached 100 after a simple and 200
    /// after a fast stop. Throws LauncherException: exit base + 8 when the
    /// start method threw, + 9 when the stop method threw, and what the steps
    /// before raise.
    int run(IService& service) override;
    void stop(IService& service) override;
    void exceptionHandler(const LauncherException& exception) override;
    /// Removes the PID file that run() wrote, unless it is another launcher's by now.
    ~Daemon() override;
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

private:
    /// What the event loop came to.
    struct Outcome {
        std::uint32_t exitBase = 0;
        std::future<void> stopMethod;  ///< valid when a stop was spawned
    };

    /// Under a lock, which the look for another owner needs. Leaves no file behind
    /// where there was none and it cannot be written.
    void savePidFile();
    void removePidFile() const noexcept;
    void changeWorkingDirectoryIfNeeded() const;
    void startJava(IService& service);
    /// Waits until the start method has been called and has run for a moment, or has
    /// ended; false when it has failed.
    [[nodiscard]] bool outlivesFirstMoments() const;
    [[nodiscard]] Outcome serveStopEvents(IService& service, ICancellableWait& listener);
    [[nodiscard]] bool isStartMethodFinished() const;
    void waitForServiceStartMethodToFinish() const;
    [[nodiscard]] std::future<void> callServiceStopMethodAndWaitForItsFinish(
        bool fast, std::uint32_t exitBase);
    [[nodiscard]] std::future<void> spawnStopMethod(bool fast, std::uint32_t exitBase);
    void collectStartMethod(std::uint32_t exitBase) const;
    static void collectStopMethod(std::future<void>& stopMethod, std::uint32_t exitBase);

    InterruptHold interrupts_;  ///< outlives the PID file
    std::unique_ptr<JavaVmManager> javaVmManager_;
    std::unique_ptr<PidFile> pidFile_;
    std::wstring savedPidFile_;  ///< as it reads from where we are; empty until one is written
    std::shared_ptr<const LauncherParameters> parameters_;
    std::shared_future<void> startMethod_;      ///< shared: stop() polls it, too
    std::atomic<bool> startMethodRuns_{false};  ///< publishes startMethod_ to stop()
    IConsole& console_;
};
